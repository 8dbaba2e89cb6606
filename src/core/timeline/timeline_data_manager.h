#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/published.h"
#include "base/signal.h"
#include "base/uuid.h"

#include "ports/texts.h"

#include "core/collections/tag_library_manager.h"
#include "core/notifications/event_bus.h"
#include "core/notifications/events.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/storage/edited_line.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/timeline/drawing_links.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_changes.h"
#include "core/timeline/timeline_transaction.h"

namespace tembrix {

// Owns the timelines of the open video. Every edit of a line or a stamp is a transaction: begin(),
// changes, commit(). Main thread only.
class TimelineDataManager {
  public:
    static constexpr double minStampLength = 0.5;  // seconds, after a resize

    TimelineDataManager(InMemoryStorageManager& storage, VideoFilesManager& library,
                        TagLibraryManager& tagLibrary, MarkupModeStore& markupMode,
                        EventBus& events, const Texts& texts);

    void setDrawingLinks(DrawingLinks* links) { drawingLinks_ = links; }

    Published<TimelineLines, TimelineDataManager> lines;
    Published<std::optional<Uuid>, TimelineDataManager> selectedLineID;
    Published<std::optional<Uuid>, TimelineDataManager> selectedStampID;
    Published<std::optional<Bytes>, TimelineDataManager> currentBookmark;

    Signal<TimelineStep> edited;  // after each edit by the user that changed something
    Signal<> replaced;            // after another timeline was opened or has replaced this one
    Signal<std::string, std::string> tagRenamed;  // tag id, new name

    // Opens the timelines of a project: sets the bookmark, the lines, the selection for the mode
    // and the drawings timeline. The id determines where the lines are saved if several videos have
    // this bookmark.
    void openTimeline(const Bytes& bookmark, TimelineLines loaded, const std::string& videoId = {});
    // The open video was bound to another file.
    void setBookmark(const Bytes& bookmark) { currentBookmark.set(bookmark); }
    // Replaces the timeline of this video, after an import or a restore, and saves it.
    void replaceLines(TimelineLines lines);

    TimelineTransaction begin() const;
    enum class Saving { now, withNextEdit };
    // Applies an edit: saves the lines, publishes them and the selection, and adds a step with this
    // text key to the history, or no step if the key is empty. Returns false and changes nothing if
    // the edit has failed or the lines were changed after begin().
    bool commit(const TimelineTransaction& edit, std::string_view stepName = {},
                Saving saving = Saving::now);

    void selectLine(const Uuid& line);
    void selectStamp(const std::optional<Uuid>& stamp) { selectedStampID.set(stamp); }
    void addLine(const std::string& name);
    // The drawings timeline cannot be deleted or renamed, and remains the first one.
    void deleteLine(const Uuid& line);
    void renameLine(const Uuid& line, const std::string& name);
    // Moves a line directly above another one, or below all if none is given. The new order is
    // saved with the next edit.
    void moveLine(const Uuid& line, const std::optional<Uuid>& above);

    bool appendStamp(const Uuid& line, TimelineStamp stamp);  // false without such a line
    // Appends the stamp to the line of this tag, which is created if necessary.
    void appendStampForTag(const Tag& tag, TimelineStamp stamp);
    void removeStamp(const Uuid& line, const Uuid& stamp);
    void setStampLabels(const Uuid& line, const Uuid& stamp, std::vector<std::string> labels);
    void setStampTimeEvents(const Uuid& line, const Uuid& stamp, std::vector<std::string> events);
    void updateStampTimes(const Uuid& line, const Uuid& stamp, std::optional<double> start,
                          std::optional<double> finish);
    void moveStamp(const StampDragInfo& drag, const Uuid& targetLine);

    void saveLines();
    Uuid ensureDrawingsTimeline();

    // Undoes a step and saves. Returns the step that redoes it. The stamp of a drawing that was
    // deleted since is not restored. The result is empty if nothing could be undone.
    TimelineStep undoStep(const TimelineStep& step);

    // Null for an unknown id; valid until the lines change.
    const TimelineLine* findLine(const Uuid& line) const;
    struct Found {
        const TimelineLine* line;
        const TimelineStamp* stamp;
    };
    std::optional<Found> findStamp(const Uuid& stamp) const;  // in all lines

  private:
    void handleTagUpdated(const events::TagUpdated& event);
    void save(const TimelineLines& lines, const EditedLines& edits);
    const VideosData* openVideo() const;  // null if the library does not know it
    std::string drawingsName() const;
    std::vector<TimelineChange> withoutDeletedDrawings(std::vector<TimelineChange> changes) const;

    InMemoryStorageManager& storage_;
    VideoFilesManager& library_;
    TagLibraryManager& tagLibrary_;
    MarkupModeStore& markupMode_;
    EventBus& events_;
    const Texts& texts_;
    DrawingLinks* drawingLinks_ = nullptr;
    std::set<std::string> deletedDrawings_;  // idTag of the drawings whose files were deleted
    std::string currentVideoId_;
    std::uint64_t revision_ = 0;  // counts the changes of `lines`
    mutable std::unordered_map<Uuid, std::pair<std::size_t, std::size_t>> stampPlaces_;
    mutable bool stampPlacesValid_ = false;
    Subscription linesChanged_;
    Subscription tagUpdated_;
};

}  // namespace tembrix
