#pragma once

#include <optional>

#include "base/uuid.h"

#include "core/records/markup_mode.h"
#include "core/records/timeline_records.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// Where the next mark goes.
struct MarkTarget {
    enum class Kind {
        nowhere,    // no timeline is selected
        drawings,   // the line of the drawings, which is selected when a match is opened
        line,       // a timeline of the user
        lineOfTag,  // each tag has a timeline of its own
    };
    Kind kind = Kind::nowhere;
    const TimelineLine* line = nullptr;  // null for `nowhere` and `lineOfTag`

    // Whether the user hardly wants to mark there.
    bool isDoubtful() const { return kind == Kind::nowhere || kind == Kind::drawings; }
};

// Its line is valid until the lines change.
MarkTarget markTarget(const TimelineDataManager& timeline, MarkupMode mode);

// The timeline below (+1) or above (-1) the selected one, past the ends and without the line of the
// drawings. Absent if there is no other one.
std::optional<Uuid> neighborLine(const TimelineDataManager& timeline, int step);

}  // namespace tembrix
