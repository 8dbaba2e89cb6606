#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/published.h"

#include "core/timeline/timeline_data_manager.h"
#include "core/timeline/timeline_transaction.h"

namespace tembrix {

// Undo and redo for all edits of lines and stamps in the open project. Each edit is one step, which
// contains only the changes that undo it. Opening another project or replacing the timelines clears
// the history.
//
// A drawing consists of a stamp on the drawings timeline and two files. Saving and deleting a
// drawing cannot be undone, because the files would not be restored; neither adds a step. No step
// restores the stamp of a deleted drawing, on any line; the rest of the step is still undone. When
// undo changes the times of a stamp, the links of drawings to it are checked again; lost links are
// not restored.
//
// Renaming a tag does not add a step. Instead, the new name is entered into all steps, so that
// restored stamps and lines have it. Main thread only.
class TimelineHistory {
  public:
    static constexpr std::size_t maxSteps = 2000;  // older steps are discarded

    explicit TimelineHistory(TimelineDataManager& timeline);

    Published<bool, TimelineHistory> canUndo{false};
    Published<bool, TimelineHistory> canRedo{false};
    // The text keys of the next steps to undo and redo, for the tooltips of the buttons.
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
