#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/cow.h"
#include "base/uuid.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// The elementary changes of which every edit of the timelines consists. They name lines and stamps
// by id and contain only the changed data, so that thousands of them need little memory. The
// inverse of a change is another change.
constexpr std::size_t atEnd = std::numeric_limits<std::size_t>::max();

struct InsertLine {
    std::size_t index = 0;
    Cow<TimelineLine> line;
};
struct RemoveLine {
    Uuid line;
};
struct MoveLine {
    Uuid line;
    std::size_t index = 0;  // of the line afterwards
};
struct RenameLine {
    Uuid line;
    std::string name;
    std::string tagIdForMode;  // tag of the line; if it is renamed, so is the line
};
struct InsertStamp {
    Uuid line;
    std::size_t index = 0;
    Cow<TimelineStamp> stamp;
};
struct RemoveStamp {
    Uuid line;
    Uuid stamp;
};
struct SetStampTimes {
    Uuid line;
    Uuid stamp;
    double start = 0;
    double finish = 0;
};
struct SetStampLabels {
    Uuid line;
    Uuid stamp;
    std::vector<std::string> labels;
};
struct SetStampTimeEvents {
    Uuid line;
    Uuid stamp;
    std::vector<std::string> events;
};
using TimelineChange = std::variant<InsertLine, RemoveLine, MoveLine, RenameLine, InsertStamp,
                                    RemoveStamp, SetStampTimes, SetStampLabels, SetStampTimeEvents>;

// The stamps of a line that a change left as they were: this many at its front and at its back.
struct UntouchedStamps {
    Uuid line;
    std::size_t front = 0;
    std::size_t back = 0;
};

// A change is impossible if the line or the stamp that it names does not exist, or if what it
// inserts exists already. It has an inverse if it changed something. If it changed the stamps of a
// line and nothing else, the untouched ones are known.
struct AppliedChange {
    bool possible = false;
    std::optional<TimelineChange> inverse;
    std::optional<UntouchedStamps> untouched{};
};
AppliedChange applyChange(TimelineLines& lines, const TimelineChange& change);

// Renames a tag in the data that the change would insert or set.
void renameTagIn(TimelineChange& change, const std::string& tagId, const std::string& name);
// Returns whether the line or one of its stamps had another name.
bool renameTagIn(Cow<TimelineLine>& line, const std::string& tagId, const std::string& name);

// Whether the stamp belongs to a saved drawing rather than to a tag.
bool isDrawingStamp(const TimelineStamp& stamp);

std::optional<std::size_t> lineIndex(const TimelineLines& lines, const Uuid& line);
std::optional<std::size_t> stampIndex(const TimelineLine& line, const Uuid& stamp);

}  // namespace tembrix
