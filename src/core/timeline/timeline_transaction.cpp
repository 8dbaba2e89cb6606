#include "core/timeline/timeline_transaction.h"

#include <utility>

namespace tembrix {

void TimelineTransaction::make(const TimelineChange& change) {
    auto [possible, inverse] = applyChange(lines_, change);
    failed_ |= !possible;
    if (inverse) {
        inverses_.push_back(std::move(*inverse));
        changed_ = true;
    }
}

void TimelineTransaction::makeIfPossible(const TimelineChange& change) {
    const bool failedBefore = failed_;
    make(change);
    failed_ = failedBefore;
}

Uuid TimelineTransaction::lineForTag(const Tag& tag) {
    for (const auto& line : lines_)
        if (line->tagIdForMode == tag.id)
            return line->id;
    const Uuid id = Uuid::random();
    make(InsertLine{atEnd, TimelineLine{id, tag.name, {}, tag.id}});
    return id;
}

void TimelineTransaction::putDrawingsFirst(const std::string& name) {
    const Uuid id = drawingsLineId();
    if (lineIndex(lines_, id))
        make(MoveLine{id, 0});
    else
        make(InsertLine{0, TimelineLine{id, name, {}, {}}});
}

void TimelineTransaction::replaceLines(TimelineLines lines) {
    lines_ = std::move(lines);
    changed_ = true;
}

void TimelineTransaction::renameTag(const std::string& tagId, const std::string& name) {
    for (auto& line : lines_)
        changed_ |= renameTagIn(line, tagId, name);
}

}  // namespace tembrix
