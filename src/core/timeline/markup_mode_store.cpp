#include "core/timeline/markup_mode_store.h"

#include "core/notifications/events.h"
#include "core/storage/data_layout.h"

namespace tembrix {

MarkupMode MarkupModeStore::currentMarkupMode() const {
    return markupModeFromText(defaults_.text(layout::markupModeKey).value_or(""));
}

void MarkupModeStore::setMarkupMode(MarkupMode mode) {
    defaults_.setText(layout::markupModeKey, markupModeText(mode));
    events_.post(events::MarkupModeChanged{mode});
}

}  // namespace tembrix
