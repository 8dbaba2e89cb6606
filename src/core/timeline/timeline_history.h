#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/published.h"

#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// Undo and redo of everything that the user does to the lines and stamps of the open project. One
// gesture is one step; a step holds only the changes that take it back. Another project or another
// timeline in its place ends the history.
//
// Drawings. A drawing is a stamp on the drawings timeline and two files, and the two stay together:
// saving a drawing and deleting one are no steps and can not be taken back, because the files do
// not come back; other steps go on around them. A step that would put the stamp of a drawing back,
// onto any line, does so only while the drawing exists, and else leaves that stamp out and does the
// rest. Links of drawings to a stamp are checked again when undo changes its times; a link that
// was lost stays lost.
//
// A tag's new name is no step either: it reaches the steps, so that what comes back bears it.
// Main thread only.
class TimelineHistory {
  public:
    static constexpr std::size_t maxSteps = 2000;  // the oldest step goes first

    explicit TimelineHistory(TimelineDataManager& timeline);

    Published<bool> canUndo{false};
    Published<bool> canRedo{false};
    // The text keys of the steps that the buttons would take, for their help.
    Published<std::optional<std::string>> undoName;
    Published<std::optional<std::string>> redoName;

    void undo();
    void redo();
    void clear();

  private:
    using Steps = std::deque<TimelineEdit>;

    void record(const TimelineEdit& step);
    void take(Steps& from, Steps& to);
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
