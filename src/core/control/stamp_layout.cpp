#include "core/control/stamp_layout.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace tembrix {

namespace {

// Counts values by rank. The counts below a rank are computed in log n.
class Tally {
  public:
    explicit Tally(std::size_t ranks) : sums_(ranks + 1, 0) {}
    void add(std::size_t rank, int count) {
        for (std::size_t i = rank + 1; i < sums_.size(); i += i & (~i + 1))
            sums_[i] += count;
    }
    int below(std::size_t rank) const {  // for the ranks 0 .. rank - 1
        int sum = 0;
        for (std::size_t i = rank; i > 0; i -= i & (~i + 1))
            sum += sums_[i];
        return sum;
    }

  private:
    std::vector<int> sums_;
};

struct Span {
    std::size_t start;  // index in the sorted times of the line
    std::size_t finish;
    std::size_t index;
};

// Counts, for each span, the earlier spans that start at its finish or later and finish at its
// start or earlier. If start <= finish for both, this is possible only for spans of length 0 at the
// same time. Divides the spans by order and sweeps each half by time.
void countOutside(std::vector<Span>& spans, std::size_t first, std::size_t last, Tally& finishes,
                  std::vector<int>& counts) {
    if (last - first < 2)
        return;
    const std::size_t middle = first + (last - first) / 2;
    countOutside(spans, first, middle, finishes, counts);
    countOutside(spans, middle, last, finishes, counts);

    const auto at = [&](std::size_t i) { return spans.begin() + static_cast<std::ptrdiff_t>(i); };
    std::sort(at(first), at(middle), [](auto& a, auto& b) { return a.start > b.start; });
    std::sort(at(middle), at(last), [](auto& a, auto& b) { return a.finish > b.finish; });
    auto earlier = at(first);
    for (auto later = at(middle); later != at(last); ++later) {
        for (; earlier != at(middle) && earlier->start >= later->finish; ++earlier)
            finishes.add(earlier->finish, 1);
        counts[later->index] += finishes.below(later->start + 1);
    }
    for (auto added = at(first); added != earlier; ++added)
        finishes.add(added->finish, -1);
}

}  // namespace

std::vector<int> overlapLevels(const Stamps& stamps) {
    std::vector<double> times;
    times.reserve(stamps.size() * 2);
    for (const auto& stamp : stamps) {
        times.push_back(stamp->timeStartSeconds);
        times.push_back(stamp->timeFinishSeconds);
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    const auto rank = [&](double time) {
        return static_cast<std::size_t>(std::lower_bound(times.begin(), times.end(), time) -
                                        times.begin());
    };

    // An earlier stamp overlaps this one if it starts before the finish and finishes after the
    // start of this one. The count is the number of earlier stamps that start before the finish,
    // minus those that finish by the start, plus those that were subtracted without having been
    // counted. The last ones can only be stamps of length 0 or with finish < start.
    std::vector<int> levels(stamps.size(), 0);
    std::vector<Span> spans;
    bool backward = false;
    Tally starts(times.size());
    Tally finishes(times.size());
    for (std::size_t i = 0; i < stamps.size(); ++i) {
        const Span span{rank(stamps[i]->timeStartSeconds), rank(stamps[i]->timeFinishSeconds), i};
        levels[i] = starts.below(span.finish) - finishes.below(span.start + 1);
        starts.add(span.start, 1);
        finishes.add(span.finish, 1);
        backward |= span.finish < span.start;
        spans.push_back(span);
    }
    if (!backward)
        std::erase_if(spans, [](const Span& span) { return span.start != span.finish; });
    Tally outside(times.size());
    countOutside(spans, 0, spans.size(), outside, levels);
    return levels;
}

std::vector<int> overlapLevels(const Stamps& stamps, std::vector<int> first) {
    constexpr std::size_t few = 8;
    if (stamps.size() > first.size() + few)
        return overlapLevels(stamps);
    for (std::size_t i = first.size(); i < stamps.size(); ++i) {
        const TimelineStamp& stamp = *stamps[i];
        const auto overlaps = [&](const auto& earlier) {
            return earlier->timeStartSeconds < stamp.timeFinishSeconds &&
                   earlier->timeFinishSeconds > stamp.timeStartSeconds;
        };
        const auto end = stamps.begin() + static_cast<std::ptrdiff_t>(i);
        first.push_back(static_cast<int>(std::count_if(stamps.begin(), end, overlaps)));
    }
    return first;
}

Rect stampRect(const TimelineStamp& stamp, int level, const TimelineAxis& axis) {
    return stampRect(axis.x(stamp.timeStartSeconds),
                     std::max(axis.x(stamp.length()), TimelineMetrics::smallestStampWidth), level,
                     axis);
}

Rect stampRect(double x, double width, int level, const TimelineAxis& axis) {
    const double height =
        std::max(TimelineMetrics::stampHeight - TimelineMetrics::stampHeightPerLevel * level,
                 TimelineMetrics::smallestStampHeight);
    const double center = std::min(std::max(x, 0.0) + width / 2, axis.width - width / 2);
    return {center - width / 2, (TimelineMetrics::rowHeight - height) / 2, width, height};
}

}  // namespace tembrix
