#include "core/control/timeline_rows.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

#include "core/records/common_stamps.h"

namespace tembrix {

std::optional<std::size_t> TimelineRow::stampIndex(const Uuid& stamp) const {
    for (std::size_t i = 0; i < line->stamps.size(); ++i)
        if (line->stamps[i]->id == stamp)
            return i;
    return {};
}

GripRects gripRects(const Rect& stamp, const TimelineAxis& axis) {
    constexpr double width = TimelineMetrics::gripWidth;
    GripRects grips{{stamp.x, stamp.y, width, stamp.height},
                    {stamp.right() - width, stamp.y, width, stamp.height}};
    if (stamp.width < 3 * width) {
        grips.left.x = std::max(stamp.x - width, 0.0);
        grips.right.x = std::min(stamp.right(), axis.width - width);
    }
    return grips;
}

namespace {

// The next version of a row: only the stamps that are new, or were pushed to another level by them,
// are looked at.
TimelineRow nextRow(const TimelineRow& before, const Cow<TimelineLine>& line) {
    const Stamps& old = before.line->stamps;
    const Stamps& now = line->stamps;
    auto [front, back] = commonStamps(old, now);
    std::vector<int> kept(before.levels.begin(),
                          before.levels.begin() + static_cast<std::ptrdiff_t>(front));
    TimelineRow row{line, overlapLevels(now, std::move(kept)), std::nullopt};
    std::size_t same = 0;
    while (same < back && before.levels[old.size() - 1 - same] == row.levels[now.size() - 1 - same])
        ++same;
    constexpr double never = std::numeric_limits<double>::infinity();
    TimeSpan changed{never, -never};
    const auto add = [&](const Stamps& stamps) {
        for (std::size_t i = front; i < stamps.size() - same; ++i) {
            const auto [start, finish] =
                std::minmax(stamps[i]->timeStartSeconds, stamps[i]->timeFinishSeconds);
            changed = {std::min(changed.start, start), std::max(changed.finish, finish)};
        }
    };
    add(old);
    add(now);
    if (changed.start <= changed.finish)
        row.changed = changed;
    return row;
}

}  // namespace

std::vector<std::size_t> TimelineRows::update(const TimelineLines& lines) {
    // Lines that were only moved keep their levels.
    std::unordered_map<const TimelineLine*, std::vector<int>*> kept;
    for (auto& row : rows_)
        kept.emplace(&*row.line, &row.levels);

    std::vector<TimelineRow> next;
    next.reserve(lines.size());
    std::vector<std::size_t> changed;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool same = i < rows_.size() && rows_[i].line.sharesWith(lines[i]);
        if (!same || lines.size() != rows_.size())
            changed.push_back(i);
        const auto found = kept.extract(&*lines[i]);
        if (found)
            next.push_back({lines[i], std::move(*found.mapped()), std::nullopt});
        else if (i < rows_.size() && rows_[i].line->id == lines[i]->id &&
                 rows_[i].levels.size() == rows_[i].line->stamps.size())
            next.push_back(nextRow(rows_[i], lines[i]));
        else
            next.push_back({lines[i], overlapLevels(lines[i]->stamps), std::nullopt});
    }
    rows_ = std::move(next);
    return changed;
}

std::optional<std::size_t> TimelineRows::indexOfLine(const Uuid& line) const {
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].line->id == line)
            return i;
    return {};
}

std::optional<TimelineHit> TimelineRows::findStamp(const Uuid& stamp) const {
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (const auto index = rows_[i].stampIndex(stamp))
            return TimelineHit{i, index, {}};
    return {};
}

std::optional<TimelineHit> TimelineRows::hit(Point point, const TimelineAxis& axis,
                                             const std::optional<Uuid>& selectedStamp) const {
    if (point.y < 0 || point.y >= height())
        return {};
    TimelineHit hit{static_cast<std::size_t>(point.y / TimelineMetrics::rowHeight), {}, {}};
    const TimelineRow& row = rows_[hit.row];
    const auto& stamps = row.line->stamps;
    const Point inRow{point.x, point.y - static_cast<double>(hit.row) * TimelineMetrics::rowHeight};

    if (selectedStamp)
        if (const auto index = row.stampIndex(*selectedStamp)) {
            const auto grips =
                gripRects(stampRect(*stamps[*index], row.levels[*index], axis), axis);
            if (grips.left.contains(inRow))
                hit.grip = ResizeEdge::left;
            else if (grips.right.contains(inRow))
                hit.grip = ResizeEdge::right;
            if (hit.grip) {
                hit.stamp = index;
                return hit;
            }
        }
    for (std::size_t i = stamps.size(); i-- > 0;)
        if (stampRect(*stamps[i], row.levels[i], axis).contains(inRow)) {
            hit.stamp = i;
            break;
        }
    return hit;
}

const TimelineStamp* stampAt(const TimelineLine& line, double time) {
    for (const auto& stamp : line.stamps)
        if (stamp->timeStartSeconds <= time && time <= stamp->timeFinishSeconds)
            return &*stamp;
    return nullptr;
}

}  // namespace tembrix
