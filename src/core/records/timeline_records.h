#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/cow.h"
#include "base/geometry.h"
#include "base/uuid.h"

namespace tembrix {

// One marked interval on one timeline.
struct TimelineStamp {
    Uuid id;
    std::string idTag;
    std::optional<std::string> primaryID;
    double timeStartSeconds = 0;  // from the start of the video
    double timeFinishSeconds = 0;
    std::string colorHex;  // the tag's color at marking
    std::string label;     // the text shown
    std::optional<bool> isActiveForMapView;
    std::vector<std::string> labels;
    std::vector<std::string> timeEvents;
    std::optional<Point> position;  // in the space of the play field

    double length() const { return timeFinishSeconds - timeStartSeconds; }
    bool operator==(const TimelineStamp&) const = default;
};

// Stamps in order of creation, not of time.
using Stamps = std::vector<Cow<TimelineStamp>>;

// One row of stamps.
struct TimelineLine {
    Uuid id;
    std::string name;
    Stamps stamps;
    std::string tagIdForMode;  // the one tag that the line collects; empty on a line made by hand
    bool operator==(const TimelineLine&) const = default;
};

// The timelines of one video in display order. Copies are cheap: lines and stamps are shared until
// written.
using TimelineLines = std::vector<Cow<TimelineLine>>;

// What a stamp carries while it is dragged between lines.
struct StampDragInfo {
    Uuid lineID;
    Uuid stampID;
    bool operator==(const StampDragInfo&) const = default;
};

// The fixed first line that collects drawn frames.
Uuid drawingsLineId();

enum class StampEditSheetType { lables, timeEvents };
std::string_view stampEditSheetText(StampEditSheetType type);

// A transient notice that a drawing lost its link to a stamp.
struct UnlinkedScreenshotPopup {
    Uuid id;
    std::string screenshotName;
    std::string tagName;
    std::string message;
    bool operator==(const UnlinkedScreenshotPopup&) const = default;
};

}  // namespace tembrix
