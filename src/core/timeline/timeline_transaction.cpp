#include "core/timeline/timeline_transaction.h"

#include <algorithm>
#include <utility>

namespace tembrix {

void TimelineTransaction::make(const TimelineChange& change) {
    auto [possible, inverse, untouched] = applyChange(lines_, change);
    failed_ |= !possible;
    if (inverse) {
        inverses_.push_back(std::move(*inverse));
        changed_ = true;
        note(untouched);
    }
}

void TimelineTransaction::note(const std::optional<UntouchedStamps>& untouched) {
    if (!untouched) {
        onlyStamps_ = false;
        return;
    }
    const auto known =
        std::find_if(untouched_.begin(), untouched_.end(),
                     [&](const UntouchedStamps& one) { return one.line == untouched->line; });
    if (known == untouched_.end()) {
        untouched_.push_back(*untouched);
        return;
    }
    // What no change touched is at the same distance from its end of the line throughout.
    known->front = std::min(known->front, untouched->front);
    known->back = std::min(known->back, untouched->back);
}

EditedLines TimelineTransaction::editedLines(const TimelineLines& before) const {
    EditedLines edited;
    if (!onlyStamps_)
        return edited;
    for (const auto& [line, front, back] : untouched_) {
        const auto old = lineIndex(before, line);
        const auto now = lineIndex(lines_, line);
        if (old && now)
            edited.push_back({before[*old], lines_[*now], front, back});
    }
    return edited;
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
    onlyStamps_ = false;
}

void TimelineTransaction::renameTag(const std::string& tagId, const std::string& name) {
    for (auto& line : lines_)
        changed_ |= renameTagIn(line, tagId, name);
    onlyStamps_ = false;
}

}  // namespace tembrix
