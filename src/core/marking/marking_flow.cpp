#include "core/marking/marking_flow.h"

#include <algorithm>
#include <utility>

#include "base/bytes.h"
#include "base/uuid.h"

#include "core/notifications/events.h"
#include "core/records/common_stamps.h"

namespace tembrix {

StampTimes ordinaryStampTimes(const Tag& tag, double now, double maxDuration) {
    const double start = std::max(now - tag.defaultTimeBefore, 0.0);
    // Computed from the clamped start, so that a press near the beginning has the full length.
    const double finish = start + tag.defaultTimeBefore + tag.defaultTimeAfter;
    return {start, std::min(finish, maxDuration)};
}

StampTimes intervalStampTimes(const Tag& tag, double openTime, double now, double maxDuration) {
    const double opened = std::max(openTime - tag.defaultTimeBefore, 0.0);
    const double closed = std::min(now + tag.defaultTimeAfter, maxDuration);
    return {std::min(opened, closed), std::max(opened, closed)};
}

MarkingFlow::MarkingFlow(TimelineDataManager& timeline, TagLibraryManager& tagLibrary,
                         MarkupModeStore& markupModes, CollectionServices& collections,
                         Playhead& playhead, FieldMapQuestion& fieldMap, Scheduler& scheduler,
                         EventBus& events)
    : timeline_(timeline),
      tagLibrary_(tagLibrary),
      markupModes_(markupModes),
      collections_(collections),
      playhead_(playhead),
      fieldMap_(fieldMap),
      scheduler_(scheduler),
      events_(events),
      work_(scheduler) {}

MarkingFlow::~MarkingFlow() = default;

void MarkingFlow::appear() {
    subscribe();
    collections_.index.migrateSavedCollections();
    userCollections.set(collections_.index.collections());
    markupMode.set(markupModes_.currentMarkupMode());
    refreshTagCounts();
    isLoadingCollections.set(tagLibrary_.isLoadingCollections());
    expandNewGroups();
}

void MarkingFlow::disappear() {
    subscriptions_.clear();
}

void MarkingFlow::subscribe() {
    subscriptions_.clear();
    const auto on = [this]<class Event>(std::function<void(const Event&)> handle) {
        subscriptions_.push_back(events_.observe<Event>(std::move(handle)));
    };
    on(std::function([this](const events::MarkupModeChanged& event) {
        markupMode.set(event.mode ? *event.mode : markupModes_.currentMarkupMode());
        dismissNeedlessMessage();
    }));
    on(std::function([this](const events::CollectionDataChanged&) {
        playFieldIsStale_ = true;
        userCollections.set(collections_.index.collections());
    }));
    on(std::function([this](const events::CurrentCollectionRefreshed&) {
        playFieldIsStale_ = true;
        expandNewGroups();
    }));
    on(std::function([this](const events::ShowLabelSheet& event) { handleTagHotkey(event.tag); }));
    on(std::function([this](const events::StampCountsChanged&) { refreshTagCounts(); }));
    on(std::function([this](const events::SheetDismissed&) {
        if (contentFor(selectedTag.get()) == SheetContent::noTimeline &&
            std::exchange(awaitsTimeline_, false))
            cancelSheet();
    }));
    on(std::function([this](const events::EditorModeChanged& event) {
        if (event.active)
            isEditorModeActive.set(*event.active);
    }));
    on(std::function(
        [this](const events::CollectionsLoadingStarted&) { isLoadingCollections.set(true); }));
    on(std::function(
        [this](const events::CollectionsLoadingFinished&) { isLoadingCollections.set(false); }));
    subscriptions_.push_back(
        timeline_.lines.observe([this](const TimelineLines&) { dismissNeedlessMessage(); }));
    subscriptions_.push_back(timeline_.selectedLineID.observe(
        [this](const std::optional<Uuid>&) { dismissNeedlessMessage(); }));
    // Switching the collection replaces the active lists, immediately or after a load.
    subscriptions_.push_back(
        tagLibrary_.active.observe([this](const CollectionLists&) { expandNewGroups(); }));
}

void MarkingFlow::expandNewGroups() {
    std::vector<std::string> expanded;
    std::set<std::string> known;
    for (const TagGroup& group : tagLibrary_.active->tagGroups) {
        const auto& open = expandedGroups.get();
        const bool isOpen = std::find(open.begin(), open.end(), group.id) != open.end();
        if (isOpen || !knownGroups_.contains(group.id))
            expanded.push_back(group.id);
        known.insert(group.id);
    }
    knownGroups_ = std::move(known);
    expandedGroups.set(std::move(expanded));
}

void MarkingFlow::handleTagTap(const Tag& tag) {
    if (!isEditorModeActive.get())
        press(tag, true);
}

void MarkingFlow::handleTagHotkey(const Tag& tag) {
    // The hot keys of two tags can be pressed before the first sheet is shown. The answer of the
    // sheet belongs to the tag for which it was opened.
    if (!isSheetAwaited())
        press(tag, false);
}

void MarkingFlow::handleTimeEventTap(const std::string& id) {
    if (!isEditorModeActive.get())
        tagLibrary_.toggleTimeEvent(id);
}

void MarkingFlow::toggleGroup(const std::string& id) {
    expandedGroups.update([&](std::vector<std::string>& expanded) {
        if (std::erase(expanded, id) == 0)
            expanded.push_back(id);
    });
}

void MarkingFlow::press(const Tag& tag, bool fromMouse) {
    awaitsTimeline_ = false;  // an earlier mark
    if (!tag.isInterval.value_or(false)) {
        pausePlayer();
        selectedTag.set(tag);
        if (asksForLabels(tag))
            openSheet();
        else
            processTag(tag, {}, std::nullopt);
        return;
    }
    const auto& open = activeIntervalTags.get();
    const auto entry = std::find_if(open.begin(), open.end(), [&](const auto& candidate) {
        return candidate.tag.id == tag.id;
    });
    if (entry == open.end()) {
        activeIntervalTags.update([&](auto& entries) {
            entries.push_back({freshId(), tag, playhead_.currentTime()});
        });
        return;
    }
    const StampTimes times =
        intervalStampTimes(tag, entry->startTime, playhead_.currentTime(), maxDuration(playhead_));
    const std::string id = entry->id;
    selectedTag.set(tag);
    showLabelSheet.set(false);
    if (fromMouse)
        work_.onMain([this, id, tag, times] { closeInterval(id, tag, times); });
    else
        closeInterval(id, tag, times);
}

void MarkingFlow::closeInterval(const std::string& entryId, const Tag& tag,
                                const StampTimes& times) {
    const auto isEntry = [&](const ActiveIntervalTag& entry) { return entry.id == entryId; };
    if (std::none_of(activeIntervalTags->begin(), activeIntervalTags->end(), isEntry))
        return;
    pausePlayer();
    if (asksForLabels(tag)) {
        openSheet();  // the entry remains until the sheet is completed
        return;
    }
    activeIntervalTags.update([&](auto& entries) { std::erase_if(entries, isEntry); });
    processTag(tag, {}, times);
}

void MarkingFlow::openSheet() {
    hideSheetTimer_.reset();  // the timer of an earlier sheet must not close this one
    sheetContent_ = contentFor(selectedTag.get());
    showLabelSheet.set(true);
}

// Playback continues as after closing the message. An open interval is kept, so that the next press
// of its tag makes the stamp.
void MarkingFlow::dismissNeedlessMessage() {
    if (awaitsTimeline_)
        return goOnWithTimeline();
    if (!*showLabelSheet || sheetContent_ != SheetContent::noTimeline ||
        contentFor(selectedTag.get()) == SheetContent::noTimeline)
        return;
    showLabelSheet.set(false);
    playhead_.play();
}

void MarkingFlow::awaitTimeline() {
    awaitsTimeline_ = true;
    showLabelSheet.set(false);
}

// Later, because the sheet that asked for the name of the timeline is still closing.
void MarkingFlow::goOnWithTimeline() {
    if (contentFor(selectedTag.get()) == SheetContent::noTimeline)
        return;
    work_.onMain([this] {
        if (std::exchange(awaitsTimeline_, false))
            openSheet();
    });
}

bool MarkingFlow::isSheetAwaited() const {
    // The message that no timeline is selected needs no answer.
    return *showLabelSheet && !hideSheetTimer_ && sheetContent_ != SheetContent::noTimeline;
}

void MarkingFlow::pausePlayer() {
    resumeTimer_.reset();  // of an earlier stamp; playback must not resume now
    playhead_.pause();
}

MarkingFlow::SheetContent MarkingFlow::contentFor(const std::optional<Tag>& tag) const {
    if (markupMode.get() == MarkupMode::standard && !isSelectedLineKnown())
        return SheetContent::noTimeline;
    if (!tag || !asksForLabels(*tag))
        return SheetContent::addingTag;
    return SheetContent::selection;
}

void MarkingFlow::completeSheet(const std::vector<std::string>& labels) {
    if (const auto tag = selectedTag.get()) {
        if (!tag->isInterval.value_or(false)) {
            processTag(*tag, labels, std::nullopt);
        } else if (isIntervalOpen(tag->id)) {
            const auto entry =
                std::find_if(activeIntervalTags->begin(), activeIntervalTags->end(),
                             [&](const auto& candidate) { return candidate.tag.id == tag->id; });
            const StampTimes times = intervalStampTimes(
                *tag, entry->startTime, playhead_.currentTime(), maxDuration(playhead_));
            dropIntervals(tag->id);
            processTag(*tag, labels, times);
        }
    }
    hideSheetTimer_ = scheduler_.after(resumeDelay, [this] { showLabelSheet.set(false); });
}

void MarkingFlow::cancelSheet() {
    playhead_.play();
    if (const auto tag = selectedTag.get(); tag && tag->isInterval.value_or(false))
        dropIntervals(tag->id);
    showLabelSheet.set(false);
}

void MarkingFlow::dropIntervals(const std::string& tagId) {
    activeIntervalTags.update([&](auto& entries) {
        std::erase_if(entries, [&](const auto& entry) { return entry.tag.id == tagId; });
    });
}

bool MarkingFlow::asksForLabels(const Tag& tag) const {
    const auto& groups = tagLibrary_.active->labelGroups;
    return std::any_of(groups.begin(), groups.end(), [&](const LabelGroupData& group) {
        return std::find(tag.lablesGroup.begin(), tag.lablesGroup.end(), group.id) !=
               tag.lablesGroup.end();
    });
}

bool MarkingFlow::isIntervalOpen(const std::string& tagId) const {
    return std::any_of(activeIntervalTags->begin(), activeIntervalTags->end(),
                       [&](const auto& entry) { return entry.tag.id == tagId; });
}

bool MarkingFlow::isSelectedLineKnown() const {
    const auto& selected = timeline_.selectedLineID.get();
    return selected && timeline_.findLine(*selected);
}

void MarkingFlow::processTag(const Tag& tag, const std::vector<std::string>& labels,
                             std::optional<StampTimes> times) {
    const auto& name = tagLibrary_.selectedStandardCollectionName.get();
    if (!tag.mapEnabled.value_or(false) || !name) {
        createStamp(tag, labels, times, std::nullopt);
        return;
    }
    if (cachedPlayField_ && !playFieldIsStale_ && cachedPlayField_->first == *name &&
        cachedPlayField_->second.imageBookmark) {
        askForPlace(tag, labels, times);
        return;
    }
    loadPlayField(*name, [this, name = *name, tag, labels, times](std::optional<PlayField> field) {
        if (!field) {
            createStamp(tag, labels, times, std::nullopt);
            return;
        }
        cachedPlayField_ = {name, *std::move(field)};
        playFieldIsStale_ = false;
        askForPlace(tag, labels, times);
    });
}

void MarkingFlow::loadPlayField(const std::string& name,
                                std::function<void(std::optional<PlayField>)> done) {
    // The services outlive the panel.
    work_.run(
        Priority::userInitiated,
        [&collections = collections_, name]() -> std::optional<PlayField> {
            CustomCollectionManager collection(collections);
            if (collection.loadCollection(name) && collection.playField() &&
                collection.playField()->imageBookmark)
                return collection.playField();
            return std::nullopt;
        },
        std::move(done));
}

void MarkingFlow::askForPlace(const Tag& tag, const std::vector<std::string>& labels,
                              std::optional<StampTimes> times) {
    if (!fieldMap_.canAsk()) {
        createStamp(tag, labels, times, std::nullopt);
        return;
    }
    const Bytes bookmark = *cachedPlayField_->second.imageBookmark;
    fieldMap_.openFieldMapSelection(tag, bookmark,
                                    work_.guard([this, tag, labels, times](Point point) {
                                        createStamp(tag, labels, times, point);
                                        resumeSoon();
                                    }));
}

void MarkingFlow::createStamp(const Tag& tag, const std::vector<std::string>& labels,
                              std::optional<StampTimes> times, std::optional<Point> point) {
    if (!times)
        times = ordinaryStampTimes(tag, playhead_.currentTime(), maxDuration(playhead_));
    TimelineStamp stamp;
    stamp.id = Uuid::random();
    stamp.idTag = tag.id;
    stamp.primaryID = tag.primaryID;
    stamp.colorHex = tag.color;
    stamp.label = tag.name;
    stamp.labels = labels;
    const auto& events = tagLibrary_.selectedTimeEvents.get();
    stamp.timeEvents.assign(events.begin(), events.end());
    if (const auto& name = tagLibrary_.selectedStandardCollectionName.get();
        point && name && cachedPlayField_ && cachedPlayField_->first == *name)
        stamp.position = Point{cachedPlayField_->second.width * point->x,
                               cachedPlayField_->second.height * point->y};
    stamp.isActiveForMapView = stamp.position.has_value();
    stamp.timeStartSeconds = times->start;
    stamp.timeFinishSeconds = times->finish;
    addStamp(tag, std::move(stamp));

    work_.onMain([this] { refreshTagCounts(); });
    if (!tag.mapEnabled.value_or(false))
        resumeSoon();
}

void MarkingFlow::addStamp(const Tag& tag, TimelineStamp stamp) {
    if (markupMode.get() == MarkupMode::standard) {
        const auto selected = timeline_.selectedLineID.get();
        if (!selected || !timeline_.appendStamp(*selected, std::move(stamp)))
            return;
    } else {
        if (const Tag* known = tagLibrary_.presentTagById(tag.id))
            timeline_.appendStampForTag(*known, std::move(stamp));
        else
            timeline_.saveLines();
    }
    events_.post(events::StampCountsChanged{});
}

void MarkingFlow::resumeSoon() {
    if (playhead_.playbackSpeed() > 0)
        resumeTimer_ = scheduler_.after(resumeDelay, [this] { playhead_.play(); });
}

void MarkingFlow::refreshTagCounts() {
    // Each press requests the counts several times. Lines that are still shared have the same
    // counts.
    const TimelineLines& lines = *timeline_.lines;
    const bool isCounted =
        std::equal(lines.begin(), lines.end(), countedLines_.begin(), countedLines_.end(),
                   [](const auto& line, const auto& last) { return line.sharesWith(last); });
    if (isCounted)
        return;
    auto counts = *tagCounts;
    const auto add = [&](const Stamps& stamps, CommonStamps except, int number) {
        for (std::size_t i = except.front; i + except.back < stamps.size(); ++i)
            counts[stamps[i]->idTag] += number;
    };
    // Of lines in the same place, only the stamps that differ are counted.
    for (std::size_t i = 0; i < std::max(lines.size(), countedLines_.size()); ++i) {
        static const Stamps none;
        const Stamps& old = i < countedLines_.size() ? countedLines_[i]->stamps : none;
        const Stamps& now = i < lines.size() ? lines[i]->stamps : none;
        if (&old == &now)
            continue;
        const CommonStamps common = commonStamps(old, now);
        add(old, common, -1);
        add(now, common, 1);
    }
    std::erase_if(counts, [](const auto& count) { return count.second == 0; });
    countedLines_ = lines;
    tagCounts.set(std::move(counts));
}

void MarkingFlow::switchToStandardCollection(const std::string& name) {
    if (!activeIntervalTags->empty() || isLoadingCollections.get())
        return;
    cachedPlayField_.reset();
    tagLibrary_.selectStandardCollection(name);
}

void MarkingFlow::switchToUserCollection(const std::string& id) {
    playFieldIsStale_ = true;
    tagLibrary_.selectUserCollection(id);
}

}  // namespace tembrix
