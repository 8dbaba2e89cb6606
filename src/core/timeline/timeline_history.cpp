#include "core/timeline/timeline_history.h"

#include <utility>

#include "core/timeline/timeline_changes.h"

namespace tembrix {

TimelineHistory::TimelineHistory(TimelineDataManager& timeline) : timeline_(timeline) {
    edited_ = timeline_.edited.observe([this](const TimelineStep& step) { record(step); });
    replaced_ = timeline_.replaced.observe([this] { clear(); });
    tagRenamed_ = timeline_.tagRenamed.observe(
        [this](const std::string& tagId, const std::string& name) { renameTag(tagId, name); });
}

void TimelineHistory::undo() {
    move(undo_, redo_);
}

void TimelineHistory::redo() {
    move(redo_, undo_);
}

void TimelineHistory::clear() {
    undo_.clear();
    redo_.clear();
    publish();
}

void TimelineHistory::record(const TimelineStep& step) {
    redo_.clear();
    undo_.push_back(step);
    if (undo_.size() > maxSteps)
        undo_.pop_front();
    publish();
}

void TimelineHistory::move(Steps& from, Steps& to) {
    // A step may have nothing left to undo, for example if its drawings were deleted since. It is
    // dropped, and the next one is undone instead.
    bool undone = false;
    while (!undone && !from.empty()) {
        const TimelineStep step = std::move(from.back());
        from.pop_back();
        TimelineStep again = timeline_.undoStep(step);
        undone = !again.changes.empty();
        if (undone)
            to.push_back(std::move(again));
    }
    publish();
}

void TimelineHistory::renameTag(const std::string& tagId, const std::string& name) {
    for (Steps* steps : {&undo_, &redo_})
        for (TimelineStep& step : *steps)
            for (TimelineChange& change : step.changes)
                renameTagIn(change, tagId, name);
}

void TimelineHistory::publish() {
    const auto name = [](const Steps& steps) {
        return steps.empty() ? std::nullopt : std::optional(std::string(steps.back().name));
    };
    undoName.setIfChanged(name(undo_));
    redoName.setIfChanged(name(redo_));
    canUndo.setIfChanged(!undo_.empty());
    canRedo.setIfChanged(!redo_.empty());
}

}  // namespace tembrix
