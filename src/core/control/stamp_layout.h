#pragma once

#include <vector>

#include "base/geometry.h"

#include "core/control/timeline_axis.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// The number of earlier stamps in the line that each stamp overlaps. Runs in n log n.
std::vector<int> overlapLevels(const Stamps& stamps);
// The same for stamps of which the first ones have these levels already. Fast if few are left.
std::vector<int> overlapLevels(const Stamps& stamps, std::vector<int> first);

// The area of a stamp in its row; the top of the row is at 0.
Rect stampRect(const TimelineStamp& stamp, int level, const TimelineAxis& axis);
// The same for a position and a width on the axis, used while an edge is dragged.
Rect stampRect(double x, double width, int level, const TimelineAxis& axis);

}  // namespace tembrix
