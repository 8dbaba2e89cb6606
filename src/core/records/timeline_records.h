#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/cow.h"
#include "base/geometry.h"
#include "base/uuid.h"

namespace tembrix {

// A marked interval on a timeline.
struct TimelineStamp {
    Uuid id;
    std::string idTag;
    std::optional<std::string> primaryID;
    double timeStartSeconds = 0;  // from the start of the video
    double timeFinishSeconds = 0;
    std::string colorHex;  // color of the tag when the stamp was made
    std::string label;     // displayed text
    std::optional<bool> isActiveForMapView;
    std::vector<std::string> labels;
    std::vector<std::string> timeEvents;
    std::optional<Point> position;  // in the coordinate space of the play field

    double length() const { return timeFinishSeconds - timeStartSeconds; }
    bool operator==(const TimelineStamp&) const = default;
};

// Stamps in order of creation, not of time.
using Stamps = std::vector<Cow<TimelineStamp>>;

// A timeline of the video: one row of stamps.
struct TimelineLine {
    Uuid id;
    std::string name;
    Stamps stamps;
    // The tag whose stamps the line collects; empty for a line created by the user.
    std::string tagIdForMode;
    bool operator==(const TimelineLine&) const = default;
};

// The timelines of one video in display order. Copies are cheap: lines and stamps are shared until
// one is modified.
using TimelineLines = std::vector<Cow<TimelineLine>>;

// Identifies a stamp while it is dragged between lines.
struct StampDragInfo {
    Uuid lineID;
    Uuid stampID;
    bool operator==(const StampDragInfo&) const = default;
};

// The id of the first line, which collects the drawings.
Uuid drawingsLineId();

enum class StampEditSheetType { lables, timeEvents };
std::string_view stampEditSheetText(StampEditSheetType type);

// A temporary notice that a drawing has lost its link to a stamp.
struct UnlinkedScreenshotPopup {
    Uuid id;
    std::string screenshotName;
    std::string tagName;
    std::string message;
    bool operator==(const UnlinkedScreenshotPopup&) const = default;
};

}  // namespace tembrix
