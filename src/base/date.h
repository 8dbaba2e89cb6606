#pragma once

#include <compare>

namespace tembrix {

// A moment in seconds since 1970-01-01 00:00:00 UTC. In JSON a date is the number of seconds since
// 2001-01-01 00:00:00 UTC.
struct Date {
    double secondsSince1970 = 0;
    // The rounding error of the conversion between the two epochs, so that a date read from JSON is
    // written back as the same number. Far below a microsecond; computations ignore it.
    double roundedAway = 0;
    auto operator<=>(const Date&) const = default;

    static constexpr double epoch2001 = 978307200.0;

    static constexpr Date fromSecondsSince2001(double seconds) {
        // The exact error of a floating point sum, by Knuth's two-sum algorithm.
        const double sum = seconds + epoch2001;
        const double epochPart = sum - seconds;
        const double secondsPart = sum - epochPart;
        return {sum, (seconds - secondsPart) + (epoch2001 - epochPart)};
    }
    constexpr double secondsSince2001() const {
        return (secondsSince1970 - epoch2001) + roundedAway;
    }
};

}  // namespace tembrix
