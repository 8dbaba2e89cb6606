#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/published.h"

#include "ports/texts.h"

#include "core/collections/tag_library_manager.h"
#include "core/notifications/event_bus.h"
#include "core/records/timeline_records.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/video_files_manager.h"

namespace tembrix {

// What the store asks of the drawings, which stand above it.
class DrawingLinks {
  public:
    virtual ~DrawingLinks() = default;
    virtual void deleteDrawingFiles(const std::string& drawingName) = 0;
    virtual void checkLinksAfterResize(const Uuid& stampId, double start, double finish) = 0;
};

// Reads and writes the stored markup mode.
class MarkupModeStore {
  public:
    MarkupModeStore(UserDefaults& defaults, EventBus& events)
        : defaults_(defaults), events_(events) {}
    MarkupMode currentMarkupMode() const;
    void setMarkupMode(MarkupMode mode);  // stores it and posts markupModeChanged

  private:
    UserDefaults& defaults_;
    EventBus& events_;
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

    // Opening a project: bookmark, lines, selection by mode, then the drawings timeline.
    void openTimeline(const Bytes& bookmark, TimelineLines loaded);

    void selectLine(const Uuid& line);
    void addLine(const std::string& name);
    Uuid lineForTag(const Tag& tag);  // made if missing; does not save
    void deleteLine(const Uuid& line);
    void renameLine(const Uuid& line, const std::string& name);
    // Moves a line directly above another; does not save by itself.
    void moveLine(const Uuid& line, const Uuid& above);

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

    // Null for an unknown id; valid until the lines change.
    const TimelineLine* findLine(const Uuid& line) const;
    struct Found {
        const TimelineLine* line;
        const TimelineStamp* stamp;
    };
    std::optional<Found> findStamp(const Uuid& stamp) const;  // over all lines

  private:
    void handleTagUpdated(const events::TagUpdated& event);

    InMemoryStorageManager& storage_;
    VideoFilesManager& library_;
    TagLibraryManager& tagLibrary_;
    MarkupModeStore& markupMode_;
    EventBus& events_;
    const Texts& texts_;
    DrawingLinks* drawingLinks_ = nullptr;
    Subscription tagUpdated_;
};

}  // namespace tembrix
