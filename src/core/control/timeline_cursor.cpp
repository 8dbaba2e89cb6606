#include "core/control/timeline_cursor.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "core/records/timeline_records.h"

namespace tembrix {

namespace {

const TimelineStamp* currentStamp(const TimelineRow& row, const TimelineCursor& cursor) {
    if (!cursor.stamp)
        return nullptr;
    const auto index = row.stampIndex(*cursor.stamp);
    return index ? &*row.line->stamps[*index] : nullptr;
}

std::optional<Uuid> nearestStamp(const TimelineLine& line, double time) {
    const TimelineStamp* nearest = nullptr;
    for (const auto& stamp : line.stamps)
        if (!nearest ||
            std::abs(stamp->timeStartSeconds - time) < std::abs(nearest->timeStartSeconds - time))
            nearest = &*stamp;
    return nearest ? std::optional(nearest->id) : std::nullopt;
}

}  // namespace

TimelineCursor cursorAcrossLines(const TimelineRows& rows, const TimelineCursor& cursor, int step,
                                 double time) {
    if (rows.size() == 0)
        return {};
    const auto row = cursor.line ? rows.indexOfLine(*cursor.line) : std::nullopt;
    std::size_t target = 0;
    if (row) {
        if (const TimelineStamp* stamp = currentStamp(rows[*row], cursor))
            time = stamp->timeStartSeconds;
        const auto last = static_cast<long>(rows.size()) - 1;
        target = static_cast<std::size_t>(std::clamp(static_cast<long>(*row) + step, 0L, last));
    }
    const TimelineLine& line = *rows[target].line;
    return {line.id, nearestStamp(line, time)};
}

TimelineCursor cursorAlongLine(const TimelineRows& rows, const TimelineCursor& cursor, int step,
                               double time) {
    const auto row = cursor.line ? rows.indexOfLine(*cursor.line) : std::nullopt;
    if (!row)
        return cursorAcrossLines(rows, {}, 0, time);
    const TimelineStamp* current = currentStamp(rows[*row], cursor);
    const TimelineLine& line = *rows[*row].line;
    if (!current)
        return {line.id, nearestStamp(line, time)};

    // Stamps with equal starts are ordered as in the line, so that each one can be reached.
    using Place = std::tuple<double, std::size_t>;
    const auto place = [&](std::size_t index) {
        return Place(line.stamps[index]->timeStartSeconds, index);
    };
    const std::size_t from = *rows[*row].stampIndex(current->id);
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < line.stamps.size(); ++i) {
        const bool ahead = step > 0 ? place(i) > place(from) : place(i) < place(from);
        const bool nearer = !best || (step > 0 ? place(i) < place(*best) : place(i) > place(*best));
        if (ahead && nearer)
            best = i;
    }
    return {line.id, line.stamps[best.value_or(from)]->id};
}

}  // namespace tembrix
