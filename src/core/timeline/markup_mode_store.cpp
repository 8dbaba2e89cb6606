#include "core/timeline/markup_mode_store.h"

#include "core/notifications/events.h"

namespace tembrix {

namespace {

constexpr std::string_view markupModeKey = "appMarkupMode";

}  // namespace

MarkupMode MarkupModeStore::currentMarkupMode() const {
    return markupModeFromText(defaults_.text(markupModeKey).value_or(""));
}

void MarkupModeStore::setMarkupMode(MarkupMode mode) {
    defaults_.setText(markupModeKey, markupModeText(mode));
    events_.post(events::MarkupModeChanged{mode});
}

}  // namespace tembrix
