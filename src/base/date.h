#pragma once

#include <compare>

namespace tembrix {

// A moment in seconds since 1970-01-01 00:00:00 UTC. In JSON a date is the number of seconds since
// 2001-01-01 00:00:00 UTC.
struct Date {
    double secondsSince1970 = 0;
    auto operator<=>(const Date&) const = default;

    static constexpr double epoch2001 = 978307200.0;
};

}  // namespace tembrix
