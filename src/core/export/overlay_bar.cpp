#include "core/export/overlay_bar.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/color.h"
#include "base/shortened.h"
#include "base/utf8_text.h"

namespace tembrix {

namespace {

constexpr double inset = 12;  // pixels around the text
constexpr double highestShare = 0.25;
constexpr double fontSize = 13;           // for a picture of height fontSizeHeight
constexpr double fontSizeHeight = 360;    // pixels
constexpr Color barColor{0, 0, 0, 0.55};  // the picture is visible through it

// The system colors that are readable on a dark background.
constexpr Color green{48 / 255.0, 209 / 255.0, 88 / 255.0, 1};
constexpr Color orange{255 / 255.0, 159 / 255.0, 10 / 255.0, 1};
constexpr Color white{1, 1, 1, 1};

std::string tagText(const OverlayItem& item, int number, const CollectionLists& library) {
    std::string text = shortened(item.tag.name) + "_" + std::to_string(number);
    for (const auto& group : library.tagGroups)
        if (std::find(group.tags.begin(), group.tags.end(), item.tag.id) != group.tags.end()) {
            text = upperCased(shortened(group.name)) + ": " + text;
            break;
        }
    if (!item.stamp.timeEvents.empty())
        text += ", ";
    return text;
}

std::string eventsText(const TimelineStamp& stamp, const std::vector<TimeEvent>& timeEvents) {
    std::vector<std::string> names;
    for (const auto& event : timeEvents)
        if (std::find(stamp.timeEvents.begin(), stamp.timeEvents.end(), event.id) !=
            stamp.timeEvents.end())
            names.push_back(shortened(event.name));
    return joined(names, ", ") + "\n";
}

}  // namespace

StampNumbers::StampNumbers(const TimelineLines& lines) {
    std::vector<const TimelineStamp*> stamps;
    for (const auto& line : lines)
        for (const auto& stamp : line->stamps)
            stamps.push_back(&*stamp);
    std::stable_sort(stamps.begin(), stamps.end(),
                     [](const TimelineStamp* a, const TimelineStamp* b) {
                         return a->timeStartSeconds < b->timeStartSeconds;
                     });
    std::unordered_map<std::string_view, int> perTag;
    for (const auto* stamp : stamps)
        numbers_.emplace(stamp->id, ++perTag[stamp->idTag]);
}

std::optional<int> StampNumbers::numberOf(const Uuid& stamp) const {
    const auto found = numbers_.find(stamp);
    return found == numbers_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<RichText> overlayText(const OverlayItem& item, const StampNumbers& numbers,
                                    const CollectionLists& library,
                                    const std::vector<TimeEvent>& timeEvents) {
    const auto number = numbers.numberOf(item.stamp.id);
    if (!number)
        return std::nullopt;
    RichText text;
    if (item.videoSize)
        text.fontSize = fontSize * item.videoSize->height / fontSizeHeight;
    text.runs.push_back({tagText(item, *number, library), green});
    text.runs.push_back({eventsText(item.stamp, timeEvents), orange});

    auto groups = item.selectedLabelGroups;
    std::stable_sort(groups.begin(), groups.end(),
                     [](const auto& a, const auto& b) { return a.group.name < b.group.name; });
    for (const auto& group : groups) {
        text.runs.push_back({upperCased(shortened(group.group.name)) + ": ", white});
        for (const auto& label : group.selectedLabels)
            text.runs.push_back(
                {shortened(label.name) + (&label == &group.selectedLabels.back() ? " " : ", "),
                 white, FontWeight::regular});
    }
    return text;
}

OverlayBar overlayBar(const RichText& text, Size renderSize, const TextMeasure& measure) {
    const double textWidth = renderSize.width - 2 * inset;
    const double textHeight = std::ceil(measure.boundingSize(text, textWidth).height) + 2 * inset;
    const double height = std::min(textHeight, renderSize.height * highestShare);

    // The bar is aligned to the lower edge of the picture. Its top row may be covered partially.
    const double rows = std::ceil(height);
    OverlayBar bar;
    bar.top = static_cast<int>(renderSize.height - rows);
    bar.picture.size = {renderSize.width, rows};
    bar.picture.items.emplace_back(
        FillRect{{0, rows - height, renderSize.width, height}, barColor});
    if (!text.runs.empty() && textWidth > 0 && height > 2 * inset)
        bar.picture.items.emplace_back(
            DrawText{{inset, rows - height + inset, textWidth, height - 2 * inset}, text});
    return bar;
}

}  // namespace tembrix
