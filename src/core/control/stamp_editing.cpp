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

const TimelineStamp* StampEditing::find(const Uuid& line, const Uuid& stamp) const {
    const TimelineLine* found = timeline_.findLine(line);
    if (!found)
        return nullptr;
    const auto at =
        std::find_if(found->stamps.begin(), found->stamps.end(),
                     [&](const Cow<TimelineStamp>& candidate) { return candidate->id == stamp; });
    return at == found->stamps.end() ? nullptr : &**at;
}

std::optional<StampEdit> StampEditing::requested(StampEditSheetType type) const {
    const auto line = Uuid::parse(defaults_.text(layout::editingLineKey).value_or(""));
    const auto stamp = Uuid::parse(defaults_.text(layout::editingStampKey).value_or(""));
    if (!line || !stamp || !find(*line, *stamp))
        return {};
    return StampEdit{*line, *stamp, type};
}

std::optional<StampItemsSelection::Arguments> StampEditing::arguments(const StampEdit& edit) const {
    const TimelineStamp* found = find(edit.line, edit.stamp);
    if (!found)
        return {};
    const TimelineStamp& stamp = *found;
    StampItemsSelection::Arguments arguments;
    arguments.sheetType = edit.type;
    if (const Tag* tag = tagLibrary_.presentTagById(stamp.idTag)) {
        arguments.stampName = tag->name;
        arguments.tag = *tag;
    } else {
        arguments.stampName = stamp.label;
    }
    arguments.initialIds =
        edit.type == StampEditSheetType::lables ? stamp.labels : stamp.timeEvents;
    arguments.timeEvents = tagLibrary_.active->timeEvents;
    return arguments;
}

void StampEditing::finish(const StampEdit& edit, std::vector<std::string> ids) {
    if (find(edit.line, edit.stamp)) {
        if (edit.type == StampEditSheetType::lables)
            timeline_.setStampLabels(edit.line, edit.stamp, std::move(ids));
        else
            timeline_.setStampTimeEvents(edit.line, edit.stamp, std::move(ids));
    }
    sheetType.set({});
}

}  // namespace tembrix
