#pragma once

#include <algorithm>

namespace tembrix {

// Dimensions of the control window in points.
struct TimelineMetrics {
    static constexpr double rowHeight = 30;
    static constexpr double headerHeight = 30;
    static constexpr double nameColumnWidth = 195;
    static constexpr double stampHeight = 25;
    static constexpr double stampHeightPerLevel = 6;
    static constexpr double smallestStampHeight = 4;
    static constexpr double smallestStampWidth = 10;
    static constexpr double smallestResizingWidth = 30;
    static constexpr double gripWidth = 8;
};

// The time axis: seconds along `width` points.
struct TimelineAxis {
    double duration = 1;    // seconds
    double interval = 0.5;  // seconds of one grid step
    double width = 0;       // points

    // `available` is the width of the window for the axis, `scale` the zoom including a pinch in
    // progress.
    static TimelineAxis make(double duration, double scale, double available) {
        return {duration, std::max(duration / (scale * 20), 0.5), available * std::max(scale, 1.0)};
    }
    double x(double time) const { return time / duration * width; }
    double time(double x) const { return width > 0 ? x / width * duration : 0; }
    bool operator==(const TimelineAxis&) const = default;
};

}  // namespace tembrix
