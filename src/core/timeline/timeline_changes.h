#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/cow.h"
#include "base/uuid.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// The small changes of which every edit of the timelines is made. Each names what it touches by id
// and carries only what it changes, so that thousands of them cost little, and each can be taken
// back by another one.
struct InsertLine {
    std::size_t index = 0;
    Cow<TimelineLine> line;
};
struct RemoveLine {
    Uuid line;
};
struct MoveLine {
    Uuid line;
    std::size_t index = 0;  // where the line stands afterwards
};
struct RenameLine {
    Uuid line;
    std::string name;
    std::string tagIdForMode;  // of the line: its name follows this tag's
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

// Applies the change and gives the one that takes it back. Nothing, and no change, if what it names
// is not there or already stands as the change would have it.
std::optional<TimelineChange> applyChange(TimelineLines& lines, const TimelineChange& change);

// Applies them in order; the result, applied in its own order, takes them all back.
std::vector<TimelineChange> applyChanges(TimelineLines& lines,
                                         const std::vector<TimelineChange>& changes);

// What a change carries follows a tag's new name as the lines themselves do.
void renameTagIn(TimelineChange& change, const std::string& tagId, const std::string& name);
// True if the line or one of its stamps had another name.
bool renameTagIn(Cow<TimelineLine>& line, const std::string& tagId, const std::string& name);

// The stamp of a saved drawing, as against a mark made with a tag.
bool isDrawingStamp(const TimelineStamp& stamp);

std::optional<std::size_t> lineIndex(const TimelineLines& lines, const Uuid& line);
std::optional<std::size_t> stampIndex(const TimelineLine& line, const Uuid& stamp);

}  // namespace tembrix
