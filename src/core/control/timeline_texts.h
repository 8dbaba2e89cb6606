#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/uuid.h"

#include "ports/texts.h"

#include "core/collections/tag_library_manager.h"
#include "core/records/markup_mode.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// The four lines of text for a hovered stamp.
std::string stampHoverText(const TimelineLine& line, const TimelineStamp& stamp,
                           const TagLibraryManager& library);

// The name and the times of a stamp, for screen readers.
std::string stampAccessibleText(const TimelineStamp& stamp);
// Its labels and time events, for screen readers; empty without any.
std::string stampAccessibleDetails(const TimelineStamp& stamp, const TagLibraryManager& library,
                                   const Texts& texts);

enum class StampMenuAction { deleteTag, editLabels, editTimeEvents };

// An entry of a context menu; without an action it is only information.
struct StampMenuItem {
    std::string key;  // text key
    std::string text;
    std::optional<StampMenuAction> action;
    bool operator==(const StampMenuItem&) const = default;
};
std::vector<StampMenuItem> stampMenu(const TimelineStamp& stamp, const TagLibraryManager& library,
                                     const Texts& texts);

enum class LineMenuAction { editName, deleteTimeline };
struct LineMenuItem {
    std::string key;
    std::string text;
    LineMenuAction action;
    bool enabled = true;
    bool operator==(const LineMenuItem&) const = default;
};
// The drawings timeline can be neither renamed nor deleted.
std::vector<LineMenuItem> lineMenu(const Uuid& line, MarkupMode mode, const Texts& texts);

// The color of a line as hex text: that of its tag or else of its first stamp; empty if it has
// neither.
std::string lineColorHex(const TimelineLine& line, const TagLibraryManager& library);

}  // namespace tembrix
