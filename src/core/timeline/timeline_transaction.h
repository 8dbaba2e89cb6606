#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/uuid.h"

#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"
#include "core/storage/edited_line.h"
#include "core/timeline/timeline_changes.h"

namespace tembrix {

// The changes that undo one edit by the user.
struct TimelineStep {
    std::string_view name;  // text key
    std::vector<TimelineChange> changes;
    // The selected line before and after the edit.
    std::optional<Uuid> selectionBefore;
    std::optional<Uuid> selectionAfter;
};

// An edit in preparation: changes to a copy of the lines and of the selection. They become
// effective as a whole with TimelineDataManager::commit().
class TimelineTransaction {
  public:
    // `revision` is the number of the state of the lines on which the edit is based.
    TimelineTransaction(TimelineLines lines, std::optional<Uuid> selectedLine,
                        std::uint64_t revision)
        : lines_(std::move(lines)),
          selectedBefore_(selectedLine),
          selected_(selectedLine),
          revision_(revision) {}

    const TimelineLines& lines() const { return lines_; }
    const std::optional<Uuid>& selectedLine() const { return selected_; }
    const std::optional<Uuid>& selectedLineBefore() const { return selectedBefore_; }

    // Applies a change. If it is impossible because a line or a stamp does not exist, the whole
    // edit fails.
    void make(const TimelineChange& change);
    // Applies a change if it is possible.
    void makeIfPossible(const TimelineChange& change);
    void selectLine(std::optional<Uuid> line) { selected_ = line; }

    // The line that collects the stamps of this tag. It is appended if there is none.
    Uuid lineForTag(const Tag& tag);
    // Makes the drawings timeline the first line.
    void putDrawingsFirst(const std::string& name);
    // Replaces the timelines by others. Cannot be undone.
    void replaceLines(TimelineLines lines);
    // Renames a tag in its stamps and its line. Cannot be undone.
    void renameTag(const std::string& tagId, const std::string& name);

    std::uint64_t revision() const { return revision_; }
    bool failed() const { return failed_; }
    bool changed() const { return changed_; }
    // The lines of which this edit changed stamps, with their versions in the lines that it started
    // from. Empty if it changed anything else.
    EditedLines editedLines(const TimelineLines& before) const;
    // The changes that undo this edit, in the order in which to apply them.
    std::vector<TimelineChange> inverses() const { return {inverses_.rbegin(), inverses_.rend()}; }

  private:
    void note(const std::optional<UntouchedStamps>& untouched);

    TimelineLines lines_;
    std::optional<Uuid> selectedBefore_;
    std::optional<Uuid> selected_;
    std::uint64_t revision_;
    std::vector<TimelineChange> inverses_;
    std::vector<UntouchedStamps> untouched_;  // of each line with changed stamps
    bool onlyStamps_ = true;                  // were changed
    bool failed_ = false;
    bool changed_ = false;
};

}  // namespace tembrix
