#pragma once

#include <string>
#include <vector>

#include "core/control/timeline_axis.h"

namespace tembrix {

// One vertical line of the grid, and the tick above it.
struct AxisTick {
    double time = 0;
    double x = 0;
    bool major = false;  // every fifth, drawn stronger
    bool operator==(const AxisTick&) const = default;
};

// The ticks of the axis that lie between two places on it, both included. Their number does not
// grow with the zoom as long as the span does not.
std::vector<AxisTick> axisTicks(const TimelineAxis& axis, double fromX, double toX);

std::string tickText(const AxisTick& tick);

}  // namespace tembrix
