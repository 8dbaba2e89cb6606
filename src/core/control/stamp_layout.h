#pragma once

#include <vector>

#include "base/geometry.h"

#include "core/control/timeline_axis.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// For each stamp the number of stamps before it in the line that overlap it. n log n.
std::vector<int> overlapLevels(const Stamps& stamps);

// Where a stamp is drawn in its row, the row's top at 0.
Rect stampRect(const TimelineStamp& stamp, int level, const TimelineAxis& axis);
// The same for a place and a width on the axis, of a stamp whose edge is being dragged.
Rect stampRect(double x, double width, int level, const TimelineAxis& axis);

}  // namespace tembrix
