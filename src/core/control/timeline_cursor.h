#pragma once

#include <optional>

#include "base/uuid.h"

#include "core/control/timeline_rows.h"

namespace tembrix {

// The keyboard cursor in the rows: a line and, if it has any, one of its stamps. It consists of
// ids, so that it remains valid when the lines change. A removed line or stamp is treated as
// absent.
struct TimelineCursor {
    std::optional<Uuid> line;
    std::optional<Uuid> stamp;
    bool operator==(const TimelineCursor&) const = default;
};

// Moves one line up (-1) or down (+1), to the stamp nearest in time to the current one or, if there
// is none, to `time`.
TimelineCursor cursorAcrossLines(const TimelineRows& rows, const TimelineCursor& cursor, int step,
                                 double time);

// Moves to the previous (-1) or next (+1) stamp of the line in order of time.
TimelineCursor cursorAlongLine(const TimelineRows& rows, const TimelineCursor& cursor, int step,
                               double time);

}  // namespace tembrix
