#include "core/timeline/timeline_history.h"

#include <utility>

#include "core/timeline/timeline_changes.h"

namespace tembrix {

namespace {

template <class T>
void setIfChanged(Published<T>& published, T value) {
    if (published.get() != value)
        published.set(std::move(value));
}

}  // namespace

TimelineHistory::TimelineHistory(TimelineDataManager& timeline) : timeline_(timeline) {
    edited_ = timeline_.edited.observe([this](const TimelineEdit& step) { record(step); });
    replaced_ = timeline_.replaced.observe([this] { clear(); });
    tagRenamed_ = timeline_.tagRenamed.observe(
        [this](const std::string& tagId, const std::string& name) { renameTag(tagId, name); });
}

void TimelineHistory::undo() {
    take(undo_, redo_);
}

void TimelineHistory::redo() {
    take(redo_, undo_);
}

void TimelineHistory::clear() {
    undo_.clear();
    redo_.clear();
    publish();
}

void TimelineHistory::record(const TimelineEdit& step) {
    redo_.clear();
    undo_.push_back(step);
    if (undo_.size() > maxSteps)
        undo_.pop_front();
    publish();
}

void TimelineHistory::take(Steps& from, Steps& to) {
    // A step whose stamps are all gone, deleted with their drawings, has nothing left to do: one
    // press takes the next that has.
    bool taken = false;
    while (!taken && !from.empty()) {
        const TimelineEdit step = std::move(from.back());
        from.pop_back();
        TimelineEdit again = timeline_.takeBack(step);
        taken = !again.changes.empty();
        if (taken)
            to.push_back(std::move(again));
    }
    publish();
}

void TimelineHistory::renameTag(const std::string& tagId, const std::string& name) {
    for (Steps* steps : {&undo_, &redo_})
        for (TimelineEdit& step : *steps)
            for (TimelineChange& change : step.changes)
                renameTagIn(change, tagId, name);
}

void TimelineHistory::publish() {
    const auto name = [](const Steps& steps) {
        return steps.empty() ? std::nullopt : std::optional(std::string(steps.back().name));
    };
    setIfChanged(undoName, name(undo_));
    setIfChanged(redoName, name(redo_));
    setIfChanged(canUndo, !undo_.empty());
    setIfChanged(canRedo, !redo_.empty());
}

}  // namespace tembrix
