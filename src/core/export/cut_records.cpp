#include "core/export/cut_records.h"

#include <cmath>

namespace tembrix {

MediaTime MediaTime::fromSeconds(double seconds) {
    constexpr double perSecond = 600.0;
    constexpr double noise = 1e-9 * perSecond;
    const double ticks = seconds * perSecond;
    const double nearest = std::round(ticks);
    return {
        static_cast<long long>(std::abs(ticks - nearest) < noise ? nearest : std::trunc(ticks))};
}

}  // namespace tembrix
