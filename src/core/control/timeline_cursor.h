#pragma once

#include <optional>

#include "base/uuid.h"

#include "core/control/timeline_rows.h"

namespace tembrix {

// Where the keyboard stands in the rows: on a line and, if it has any, on one of its stamps. Ids,
// so that it survives every change; what is gone reads as absent.
struct TimelineCursor {
    std::optional<Uuid> line;
    std::optional<Uuid> stamp;
    bool operator==(const TimelineCursor&) const = default;
};

// One line up (-1) or down (+1), to the stamp nearest in time to the present one or, without one,
// to `time`.
TimelineCursor cursorAcrossLines(const TimelineRows& rows, const TimelineCursor& cursor, int step,
                                 double time);

// The previous (-1) or next (+1) stamp of the line in order of time.
TimelineCursor cursorAlongLine(const TimelineRows& rows, const TimelineCursor& cursor, int step,
                               double time);

}  // namespace tembrix
