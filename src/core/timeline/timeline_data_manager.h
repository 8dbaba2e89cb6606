#pragma once

#include <optional>
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
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"
#include "core/timeline/drawing_links.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_changes.h"

namespace tembrix {

// One gesture of the user on the timelines: the changes that take it back, in their order.
struct TimelineEdit {
    std::string_view name;  // text key
    std::vector<TimelineChange> changes;
    // The selection of the line before and after the gesture.
    std::optional<Uuid> selectionBefore;
    std::optional<Uuid> selectionAfter;
};

// The single owner of the timelines of the open video. Every change of a line or a stamp goes
// through it and ends in a save. Main thread only.
class TimelineDataManager {
  public:
    static constexpr double minStampLength = 0.5;  // seconds, after a resize

    TimelineDataManager(InMemoryStorageManager& storage, VideoFilesManager& library,
                        TagLibraryManager& tagLibrary, MarkupModeStore& markupMode,
                        EventBus& events, const Texts& texts);

    void setDrawingLinks(DrawingLinks* links) { drawingLinks_ = links; }

    Published<TimelineLines> lines;
    Published<std::optional<Uuid>> selectedLineID;
    Published<std::optional<Uuid>> selectedStampID;
    std::optional<Bytes> currentBookmark;

    Signal<TimelineEdit> edited;                  // after each gesture that changed something
    Signal<> replaced;                            // another timeline took the place of this one
    Signal<std::string, std::string> tagRenamed;  // tag id, its name from now on

    // Opening a project: bookmark, lines, selection by mode, then the drawings timeline. The id
    // decides where the lines are saved if several videos have this bookmark.
    void openTimeline(const Bytes& bookmark, TimelineLines loaded, const std::string& videoId = {});
    // Puts another timeline in place of this video's, for an import or a rescue, and saves.
    void replaceLines(TimelineLines lines);

    void selectLine(const Uuid& line);
    void addLine(const std::string& name);
    Uuid lineForTag(const Tag& tag);  // made if missing; does not save
    // The drawings timeline can be neither deleted, renamed nor moved from its first place.
    void deleteLine(const Uuid& line);
    void renameLine(const Uuid& line, const std::string& name);
    // Moves a line directly above another, or below all without one; does not save by itself.
    void moveLine(const Uuid& line, const std::optional<Uuid>& above);

    // Appends and saves; false if there is no such line.
    bool appendStamp(const Uuid& line, TimelineStamp stamp);
    void removeStamp(const Uuid& line, const Uuid& stamp);
    void setStampLabels(const Uuid& line, const Uuid& stamp, std::vector<std::string> labels);
    void setStampTimeEvents(const Uuid& line, const Uuid& stamp, std::vector<std::string> events);
    void updateStampTimes(const Uuid& line, const Uuid& stamp, std::optional<double> start,
                          std::optional<double> finish);
    void moveStamp(const StampDragInfo& drag, const Uuid& targetLine);

    void saveLines();
    Uuid ensureDrawingsTimeline();

    // Takes an edit back and saves; gives the edit that does it again. Stamps of drawings come back
    // only if their drawing is there. Without changes in the result nothing was left to take back.
    TimelineEdit takeBack(const TimelineEdit& edit);

    // Null for an unknown id; valid until the lines change.
    const TimelineLine* findLine(const Uuid& line) const;
    struct Found {
        const TimelineLine* line;
        const TimelineStamp* stamp;
    };
    std::optional<Found> findStamp(const Uuid& stamp) const;  // over all lines

  private:
    void handleTagUpdated(const events::TagUpdated& event);
    // Makes the changes and tells the observers of the lines once; gives what takes them back.
    std::vector<TimelineChange> change(const std::vector<TimelineChange>& changes);
    void addToStep(std::vector<TimelineChange> inverses);
    void endStep(std::string_view name, std::optional<Uuid> selectionBefore);
    void store();
    std::vector<TimelineChange> withDrawingsThatExist(std::vector<TimelineChange> changes) const;

    InMemoryStorageManager& storage_;
    VideoFilesManager& library_;
    TagLibraryManager& tagLibrary_;
    MarkupModeStore& markupMode_;
    EventBus& events_;
    const Texts& texts_;
    DrawingLinks* drawingLinks_ = nullptr;
    std::string currentVideoId_;
    std::vector<TimelineChange> openStep_;  // taken into the gesture that is being made
    mutable std::unordered_map<Uuid, std::pair<std::size_t, std::size_t>> stampPlaces_;
    mutable bool stampPlacesValid_ = false;
    Subscription linesChanged_;
    Subscription tagUpdated_;
};

}  // namespace tembrix
