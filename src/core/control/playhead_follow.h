#pragma once

#include <algorithm>
#include <optional>

namespace tembrix {

// How a zoomed view stays with the playhead, which goes from one place of the axis to another:
// where to scroll if it thereby leaves the view of `room` points that begins at `scroll`, all in
// points of the axis. Absent while it stays in view; and absent if it was out of view before, since
// then a hand has scrolled elsewhere to look at something.
inline std::optional<double> followPlayhead(double before, double now, double scroll, double room) {
    constexpr double placeInView = 0.25;  // so that most of the view shows what comes next
    const auto inView = [&](double x) { return x >= scroll && x <= scroll + room; };
    if (!inView(before) || inView(now))
        return {};
    return std::max(now - room * placeInView, 0.0);
}

}  // namespace tembrix
