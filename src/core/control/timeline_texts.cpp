#include "core/control/timeline_texts.h"

#include <fmt/format.h>

#include "base/shortened.h"
#include "base/time_text.h"
#include "base/utf8_text.h"

#include "core/records/annotation_records.h"

namespace tembrix {

namespace {

constexpr const char* nothing = "—";

std::string labelNames(const TimelineStamp& stamp, const TagLibraryManager& library) {
    std::vector<std::string> names;
    for (const auto& id : stamp.labels)
        if (const Label* label = library.labelById(id))
            names.push_back(label->name);
    return names.empty() ? nothing : shortened(joined(names, ", "));
}

}  // namespace

std::string stampHoverText(const TimelineLine& line, const TimelineStamp& stamp,
                           const TagLibraryManager& library) {
    const Tag* tag = library.tagById(stamp.idTag);
    return joined(
        {shortened(tag ? tag->name : stamp.label), shortened(line.name), labelNames(stamp, library),
         formatTimeShort(stamp.timeStartSeconds) + " • " + formatTimeShort(stamp.length())},
        "\n");
}

std::string stampAccessibleText(const TimelineStamp& stamp) {
    return shortened(stamp.label) + ", " + formatTimeShort(stamp.timeStartSeconds) + " – " +
           formatTimeShort(stamp.timeFinishSeconds);
}

std::string stampAccessibleDetails(const TimelineStamp& stamp, const TagLibraryManager& library,
                                   const Texts& texts) {
    std::vector<std::string> details;
    if (!stamp.labels.empty())
        details.push_back(texts.format("stampAccessibleLabels", {labelNames(stamp, library)}));
    std::vector<std::string> events;
    for (const auto& id : stamp.timeEvents)
        for (const TimeEvent& event : library.merged->timeEvents)
            if (event.id == id) {
                events.push_back(event.name);
                break;
            }
    if (!events.empty())
        details.push_back(texts.format("stampAccessibleEvents", {shortened(joined(events, ", "))}));
    return joined(details, ". ");
}

std::vector<StampMenuItem> stampMenu(const TimelineStamp& stamp, const TagLibraryManager& library,
                                     const Texts& texts) {
    std::vector<StampMenuItem> items;
    items.push_back({"fieldMapTagTitleNoNumber",
                     texts.text("fieldMapTagTitleNoNumber") + " " + shortened(stamp.label),
                     {}});
    if (stamp.position)
        items.push_back(
            {"fieldMapTagPosition",
             texts.format("fieldMapTagPosition", {fmt::format("{:.0f}", stamp.position->x),
                                                  fmt::format("{:.0f}", stamp.position->y)}),
             {}});
    if (!stamp.labels.empty())
        items.push_back({"fieldMapLabelEvents",
                         texts.text("fieldMapLabelEvents") + " " + labelNames(stamp, library),
                         {}});
    const auto button = [&](const char* key, StampMenuAction action) {
        items.push_back({key, texts.text(key), action});
    };
    button("timelineButtonDeleteTag", StampMenuAction::deleteTag);
    button("timelineButtonEditLabels", StampMenuAction::editLabels);
    button("timelineButtonEditTimeEvents", StampMenuAction::editTimeEvents);
    return items;
}

std::vector<LineMenuItem> lineMenu(const Uuid& line, MarkupMode mode, const Texts& texts) {
    const bool enabled = line != drawingsLineId();
    std::vector<LineMenuItem> items;
    const auto add = [&](const char* key, LineMenuAction action) {
        items.push_back({key, texts.text(key), action, enabled});
    };
    if (mode == MarkupMode::standard)
        add("editName", LineMenuAction::editName);
    add("timelineButtonDeleteTimeline", LineMenuAction::deleteTimeline);
    return items;
}

std::string lineColorHex(const TimelineLine& line, const TagLibraryManager& library) {
    if (!line.tagIdForMode.empty())
        if (const Tag* tag = library.tagById(line.tagIdForMode))
            return tag->color;
    return line.stamps.empty() ? std::string() : line.stamps.front()->colorHex;
}

}  // namespace tembrix
