#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/geometry.h"
#include "base/published.h"

#include "ports/scheduler.h"

#include "core/background/background_work.h"
#include "core/collections/custom_collection_manager.h"
#include "core/collections/tag_library_manager.h"
#include "core/marking/field_map_question.h"
#include "core/notifications/event_bus.h"
#include "core/playback/playhead.h"
#include "core/records/annotation_records.h"
#include "core/records/markup_mode.h"
#include "core/records/timeline_records.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// An open interval of an interval tag; kept in memory only.
struct ActiveIntervalTag {
    std::string id;
    Tag tag;
    double startTime = 0;  // video time of the first press
};

// An interval on the video, seconds.
struct StampTimes {
    double start = 0;
    double finish = 0;
    bool operator==(const StampTimes&) const = default;
};

StampTimes ordinaryStampTimes(const Tag& tag, double now, double maxDuration);
StampTimes intervalStampTimes(const Tag& tag, double openTime, double now, double maxDuration);

// The logic of the tag panel: creates stamps from tag presses. Lives as long as the panel. Main
// thread only.
class MarkingFlow {
  public:
    static constexpr double resumeDelay = 0.1;  // seconds from the stamp to playback

    MarkingFlow(TimelineDataManager& timeline, TagLibraryManager& tagLibrary,
                MarkupModeStore& markupModes, CollectionServices& collections, Playhead& playhead,
                FieldMapQuestion& fieldMap, Scheduler& scheduler, EventBus& events);
    ~MarkingFlow();

    // Called when the panel is shown: subscribes to events, loads the list of collections, reads
    // the mode and counts the stamps.
    void appear();
    // Called when the panel is closed. Afterwards no event is handled.
    void disappear();

    Published<std::vector<CollectionInfo>, MarkingFlow> userCollections;

    Published<MarkupMode, MarkingFlow> markupMode;
    Published<std::optional<Tag>, MarkingFlow> selectedTag;
    Published<bool, MarkingFlow> showLabelSheet{false};
    Published<std::vector<ActiveIntervalTag>, MarkingFlow> activeIntervalTags;
    Published<std::map<std::string, int>, MarkingFlow> tagCounts;
    Published<bool, MarkingFlow> isEditorModeActive{false};
    Published<bool, MarkingFlow> isLoadingCollections{false};
    Published<std::vector<std::string>, MarkingFlow> expandedGroups;

    void handleTagTap(const Tag& tag);     // by mouse
    void handleTagHotkey(const Tag& tag);  // by keyboard
    void handleTimeEventTap(const std::string& id);
    void toggleGroup(const std::string& id);  // folds or unfolds it

    // The content of the label sheet, determined when it is shown. The message that no timeline is
    // selected closes by itself once one is selected.
    enum class SheetContent { noTimeline, addingTag, selection };
    SheetContent sheetContent() const { return sheetContent_; }
    void completeSheet(const std::vector<std::string>& labels);
    void cancelSheet();
    // The user adds a timeline for the mark that lacks one. The mark goes on when a timeline is
    // selected; if the question for its name ends without one, the mark is canceled.
    void awaitTimeline();

    bool asksForLabels(const Tag& tag) const;
    bool isIntervalOpen(const std::string& tagId) const;
    void refreshTagCounts();

    // The user switches the collection in the panel.
    void switchToStandardCollection(const std::string& name);
    void switchToUserCollection(const std::string& id);

  private:
    void subscribe();
    void press(const Tag& tag, bool fromMouse);
    void closeInterval(const std::string& entryId, const Tag& tag, const StampTimes& times);
    void openSheet();
    SheetContent contentFor(const std::optional<Tag>& tag) const;
    void dismissNeedlessMessage();
    void goOnWithTimeline();
    bool isSheetAwaited() const;  // the sheet was neither completed nor canceled yet
    void pausePlayer();
    void dropIntervals(const std::string& tagId);
    // Without times, the stamp is based on the time at which it is made.
    void processTag(const Tag& tag, const std::vector<std::string>& labels,
                    std::optional<StampTimes> times);
    void loadPlayField(const std::string& name, std::function<void(std::optional<PlayField>)> done);
    void askForPlace(const Tag& tag, const std::vector<std::string>& labels,
                     std::optional<StampTimes> times);
    void createStamp(const Tag& tag, const std::vector<std::string>& labels,
                     std::optional<StampTimes> times, std::optional<Point> point);
    void addStamp(const Tag& tag, TimelineStamp stamp);
    void resumeSoon();
    void expandNewGroups();
    bool isSelectedLineKnown() const;

    TimelineDataManager& timeline_;
    TagLibraryManager& tagLibrary_;
    MarkupModeStore& markupModes_;
    CollectionServices& collections_;
    Playhead& playhead_;
    FieldMapQuestion& fieldMap_;
    Scheduler& scheduler_;
    EventBus& events_;
    std::optional<std::pair<std::string, PlayField>> cachedPlayField_;
    SheetContent sheetContent_ = SheetContent::addingTag;  // of the last sheet
    bool awaitsTimeline_ = false;
    bool playFieldIsStale_ = false;  // a collection was changed after the field was loaded
    std::set<std::string> knownGroups_;
    TimelineLines countedLines_;  // the lines for which tagCounts was computed
    std::unique_ptr<Timer> resumeTimer_;
    std::unique_ptr<Timer> hideSheetTimer_;
    std::vector<Subscription> subscriptions_;
    BackgroundWork work_;
};

}  // namespace tembrix
