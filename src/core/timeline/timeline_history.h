#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/published.h"

#include "core/timeline/timeline_data_manager.h"
#include "core/timeline/timeline_transaction.h"

namespace tembrix {

// Undo and redo of all edits of the lines and stamps of the open project. Each edit is one step,
// which keeps only the changes that undo it. Opening another project or replacing the timeline
// clears the history.
//
// Drawings: a drawing is a stamp on the drawings timeline and two files, which must not be
// separated. Saving and deleting a drawing cannot be undone, because the files would not come back;
// neither is a step. A step that would restore the stamp of a drawing, on any line, restores it
// only while the drawing exists; the rest of the step is undone all the same. The links of drawings
// to a stamp are checked again when undo changes the stamp's times; a lost link is not restored.
//
// Renaming a tag is not a step either. The new name is entered into all steps, so that restored
// stamps and lines have it. Main thread only.
class TimelineHistory {
  public:
    static constexpr std::size_t maxSteps = 2000;  // the oldest ones are dropped

    explicit TimelineHistory(TimelineDataManager& timeline);

    Published<bool, TimelineHistory> canUndo{false};
    Published<bool, TimelineHistory> canRedo{false};
    // The text keys of the next steps to undo and redo, for the help of the buttons.
    Published<std::optional<std::string>, TimelineHistory> undoName;
    Published<std::optional<std::string>, TimelineHistory> redoName;

    void undo();
    void redo();
    void clear();

  private:
    using Steps = std::deque<TimelineStep>;

    void record(const TimelineStep& step);
    void move(Steps& from, Steps& to);
    void renameTag(const std::string& tagId, const std::string& name);
    void publish();

    TimelineDataManager& timeline_;
    Steps undo_;
    Steps redo_;
    Subscription edited_;
    Subscription replaced_;
    Subscription tagRenamed_;
};

}  // namespace tembrix
