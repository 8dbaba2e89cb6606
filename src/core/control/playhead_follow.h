#pragma once

#include <algorithm>
#include <optional>

namespace tembrix {

// Scrolls a zoomed view to follow the playhead when it moves from `before` to `now`. Returns the
// new scroll position if the playhead leaves the view of `room` points that starts at `scroll`.
// Returns nothing while it is in view, or if it was out of view before, because then the user has
// scrolled elsewhere. All values are points on the axis.
inline std::optional<double> followPlayhead(double before, double now, double scroll, double room) {
    constexpr double placeInView = 0.25;  // so that most of the view shows what comes next
    const auto inView = [&](double x) { return x >= scroll && x <= scroll + room; };
    if (!inView(before) || inView(now))
        return {};
    return std::max(now - room * placeInView, 0.0);
}

}  // namespace tembrix
