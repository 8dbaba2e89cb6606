#pragma once

#include <string>
#include <vector>

#include "core/control/timeline_axis.h"

namespace tembrix {

// A vertical line of the grid and its tick.
struct AxisTick {
    double time = 0;
    double x = 0;
    bool major = false;  // every fifth, painted stronger
    bool operator==(const AxisTick&) const = default;
};

// The ticks between two positions on the axis, both included. Their number depends on the distance
// of the positions, not on the zoom.
std::vector<AxisTick> axisTicks(const TimelineAxis& axis, double fromX, double toX);

std::string tickText(const AxisTick& tick);

}  // namespace tembrix
