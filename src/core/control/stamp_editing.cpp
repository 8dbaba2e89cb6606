#include "core/control/stamp_editing.h"

#include <algorithm>

#include "base/cow.h"

#include "core/records/annotation_records.h"
#include "core/storage/data_layout.h"

namespace tembrix {

void StampEditing::request(const Uuid& line, const Uuid& stamp, StampEditSheetType type) {
    defaults_.setText(layout::editingLineKey, line.text());
    defaults_.setText(layout::editingStampKey, stamp.text());
    timer_ = scheduler_.after(sheetDelay, [this, type] { sheetType.set(type); });
}

std::optional<StampEditing::Target> StampEditing::target() const {
    const auto line = Uuid::parse(defaults_.text(layout::editingLineKey).value_or(""));
    const auto stamp = Uuid::parse(defaults_.text(layout::editingStampKey).value_or(""));
    if (!line || !stamp)
        return {};
    const TimelineLine* found = timeline_.findLine(*line);
    if (!found)
        return {};
    const auto at =
        std::find_if(found->stamps.begin(), found->stamps.end(),
                     [&](const Cow<TimelineStamp>& candidate) { return candidate->id == *stamp; });
    if (at == found->stamps.end())
        return {};
    return Target{*line, &**at};
}

std::optional<StampItemsSelection::Arguments> StampEditing::arguments(
    StampEditSheetType type) const {
    const auto found = target();
    if (!found)
        return {};
    const TimelineStamp& stamp = *found->stamp;
    StampItemsSelection::Arguments arguments;
    arguments.sheetType = type;
    if (const Tag* tag = tagLibrary_.presentTagById(stamp.idTag)) {
        arguments.stampName = tag->name;
        arguments.tag = *tag;
    } else {
        arguments.stampName = stamp.label;
    }
    arguments.initialIds = type == StampEditSheetType::lables ? stamp.labels : stamp.timeEvents;
    arguments.timeEvents = tagLibrary_.active->timeEvents;
    return arguments;
}

void StampEditing::finish(std::vector<std::string> ids) {
    const auto type = *sheetType;
    const auto found = target();
    if (type && found) {
        const Uuid stamp = found->stamp->id;
        if (*type == StampEditSheetType::lables)
            timeline_.setStampLabels(found->line, stamp, std::move(ids));
        else
            timeline_.setStampTimeEvents(found->line, stamp, std::move(ids));
    }
    sheetType.set({});
}

}  // namespace tembrix
