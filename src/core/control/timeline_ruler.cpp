#include "core/control/timeline_ruler.h"

#include <algorithm>
#include <cmath>

#include "base/time_text.h"

namespace tembrix {

std::vector<AxisTick> axisTicks(const TimelineAxis& axis, double fromX, double toX) {
    // Rounding must not remove the last line if the step divides the duration.
    constexpr double rounding = 1e-9;
    const double last = std::floor(axis.duration / axis.interval + rounding);
    const double first = std::max(std::ceil(axis.time(fromX) / axis.interval - rounding), 0.0);
    const double until = std::min(std::floor(axis.time(toX) / axis.interval + rounding), last);
    std::vector<AxisTick> ticks;
    for (double k = first; k <= until; ++k) {
        const double time = k * axis.interval;
        ticks.push_back({time, axis.x(time), std::fmod(k, 5) == 0});
    }
    return ticks;
}

std::string tickText(const AxisTick& tick) {
    return formatTimeShort(tick.time);
}

}  // namespace tembrix
