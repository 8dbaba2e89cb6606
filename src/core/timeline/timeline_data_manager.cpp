#include "core/timeline/timeline_data_manager.h"

#include <algorithm>
#include <unordered_set>

#include "base/cow.h"
#include "base/utf8_text.h"

#include "core/records/markup_mode.h"
#include "core/records/video_records.h"

namespace tembrix {

namespace {

// A document from another program may contain an id twice. The later line or stamp gets a new id,
// so that each id is unique.
void makeIdsUnique(TimelineLines& lines) {
    std::unordered_set<Uuid> lineIds;
    std::unordered_set<Uuid> stampIds;
    for (auto& line : lines) {
        if (!lineIds.insert(line->id).second)
            lineIds.insert(line.write().id = Uuid::random());
        for (std::size_t i = 0; i < line->stamps.size(); ++i)
            if (!stampIds.insert(line->stamps[i]->id).second)
                stampIds.insert(line.write().stamps[i].write().id = Uuid::random());
    }
}

bool changesStampCounts(const TimelineChange& change) {
    return !std::holds_alternative<MoveLine>(change) &&
           !std::holds_alternative<RenameLine>(change) &&
           !std::holds_alternative<SetStampTimes>(change) &&
           !std::holds_alternative<SetStampLabels>(change) &&
           !std::holds_alternative<SetStampTimeEvents>(change);
}

}  // namespace

TimelineDataManager::TimelineDataManager(InMemoryStorageManager& storage,
                                         VideoFilesManager& library, TagLibraryManager& tagLibrary,
                                         MarkupModeStore& markupMode, EventBus& events,
                                         const Texts& texts)
    : storage_(storage),
      library_(library),
      tagLibrary_(tagLibrary),
      markupMode_(markupMode),
      events_(events),
      texts_(texts) {
    linesChanged_ = lines.observe([this](const TimelineLines&) {
        ++revision_;
        stampPlacesValid_ = false;
    });
    tagUpdated_ = events_.observe<events::TagUpdated>(
        [this](const events::TagUpdated& event) { handleTagUpdated(event); });
}

void TimelineDataManager::openTimeline(const Bytes& bookmark, TimelineLines loaded,
                                       const std::string& videoId) {
    makeIdsUnique(loaded);
    currentBookmark.set(bookmark);
    currentVideoId_ = videoId;
    lines.set(std::move(loaded));
    const bool selects = markupMode_.currentMarkupMode() == MarkupMode::standard && !lines->empty();
    selectedLineID.set(selects ? std::optional(lines->front()->id) : std::nullopt);
    storage_.prepareToSave(*lines);
    ensureDrawingsTimeline();
    deletedDrawings_.clear();
    replaced.emit();
}

void TimelineDataManager::replaceLines(TimelineLines replacement) {
    makeIdsUnique(replacement);
    auto edit = begin();
    edit.replaceLines(std::move(replacement));
    edit.putDrawingsFirst(drawingsName());
    if (edit.selectedLine() && !lineIndex(edit.lines(), *edit.selectedLine()))
        edit.selectLine(std::nullopt);
    commit(edit);
    deletedDrawings_.clear();
    replaced.emit();
    events_.post(events::StampCountsChanged{});
}

TimelineTransaction TimelineDataManager::begin() const {
    return {lines.get(), selectedLineID.get(), revision_};
}

bool TimelineDataManager::commit(const TimelineTransaction& edit, std::string_view stepName,
                                 Saving saving) {
    if (edit.failed() || edit.revision() != revision_)
        return false;
    if (saving == Saving::now)
        save(edit.lines(), edit.editedLines(*lines));
    // Observers must never see a selected line that does not exist.
    const bool selects = edit.selectedLine() != selectedLineID.get();
    if (selects && !edit.selectedLine())
        selectedLineID.set(std::nullopt);
    if (edit.changed())
        lines.set(edit.lines());
    if (selects && edit.selectedLine())
        selectedLineID.set(edit.selectedLine());
    auto inverses = edit.inverses();
    if (!stepName.empty() && !inverses.empty())
        edited.emit(
            {stepName, std::move(inverses), edit.selectedLineBefore(), edit.selectedLine()});
    return true;
}

void TimelineDataManager::selectLine(const Uuid& line) {
    if (markupMode_.currentMarkupMode() == MarkupMode::standard)
        selectedLineID.set(line);
}

void TimelineDataManager::addLine(const std::string& name) {
    if (markupMode_.currentMarkupMode() != MarkupMode::standard)
        return;
    auto edit = begin();
    const Uuid id = Uuid::random();
    edit.make(InsertLine{atEnd, TimelineLine{id, name, {}, {}}});
    edit.selectLine(id);
    commit(edit, "timelineStepAddTimeline");
}

void TimelineDataManager::deleteLine(const Uuid& line) {
    if (line == drawingsLineId())
        return;
    auto edit = begin();
    const TimelineLine* found = findLine(line);
    const bool countsChange = found && !found->stamps.empty();
    if (edit.selectedLine() == line)
        edit.selectLine(std::nullopt);
    edit.makeIfPossible(RemoveLine{line});
    commit(edit, "timelineStepDeleteTimeline");
    if (countsChange)
        events_.post(events::StampCountsChanged{});
}

void TimelineDataManager::renameLine(const Uuid& line, const std::string& name) {
    if (line == drawingsLineId())
        return;
    auto edit = begin();
    edit.make(RenameLine{line, name, {}});
    commit(edit, "timelineStepRenameTimeline");
}

void TimelineDataManager::moveLine(const Uuid& line, const std::optional<Uuid>& above) {
    const auto source = lineIndex(*lines, line);
    const auto target = above ? lineIndex(*lines, *above) : lines->size();
    if (!source || !target || source == target)
        return;
    const std::size_t index = *target - (*source < *target ? 1 : 0);
    if (lines->front()->id == drawingsLineId() && (*source == 0 || index == 0))
        return;
    auto edit = begin();
    edit.make(MoveLine{line, index});
    commit(edit, "timelineStepReorderTimelines", Saving::withNextEdit);
}

bool TimelineDataManager::appendStamp(const Uuid& line, TimelineStamp stamp) {
    // A drawing's files are not removed by undo, so its stamp must not be removed either.
    const bool isStep = line != drawingsLineId() || !isDrawingStamp(stamp);
    auto edit = begin();
    edit.make(InsertStamp{line, atEnd, std::move(stamp)});
    return commit(edit, isStep ? "timelineStepMark" : "");
}

void TimelineDataManager::appendStampForTag(const Tag& tag, TimelineStamp stamp) {
    auto edit = begin();
    const Uuid line = edit.lineForTag(tag);
    edit.make(InsertStamp{line, atEnd, std::move(stamp)});
    commit(edit, "timelineStepMark");
}

void TimelineDataManager::removeStamp(const Uuid& line, const Uuid& stamp) {
    const TimelineLine* found = findLine(line);
    if (!found)
        return;
    bool filesRemoved = false;
    if (const auto index = stampIndex(*found, stamp);
        index && line == drawingsLineId() && drawingLinks_) {
        const TimelineStamp& removed = *found->stamps[*index];
        filesRemoved = isDrawingStamp(removed);
        if (filesRemoved)
            deletedDrawings_.insert(removed.idTag);
        drawingLinks_->deleteDrawingFiles(std::string(removed.label));
    }
    auto edit = begin();
    edit.makeIfPossible(RemoveStamp{line, stamp});
    commit(edit, filesRemoved ? "" : "timelineStepDeleteTag");
    events_.post(events::StampCountsChanged{});
}

void TimelineDataManager::setStampLabels(const Uuid& line, const Uuid& stamp,
                                         std::vector<std::string> labels) {
    auto edit = begin();
    edit.make(SetStampLabels{line, stamp, std::move(labels)});
    commit(edit, "timelineStepEditLabels");
}

void TimelineDataManager::setStampTimeEvents(const Uuid& line, const Uuid& stamp,
                                             std::vector<std::string> events) {
    auto edit = begin();
    edit.make(SetStampTimeEvents{line, stamp, std::move(events)});
    commit(edit, "timelineStepEditTimeEvents");
}

void TimelineDataManager::updateStampTimes(const Uuid& line, const Uuid& stamp,
                                           std::optional<double> start,
                                           std::optional<double> finish) {
    const TimelineLine* found = findLine(line);
    const auto index = found ? stampIndex(*found, stamp) : std::nullopt;
    if (!index)
        return;
    SetStampTimes times{line, stamp, found->stamps[*index]->timeStartSeconds,
                        found->stamps[*index]->timeFinishSeconds};
    if (start)
        times.start = std::min(*start, times.finish - minStampLength);
    if (finish)
        times.finish = std::max(*finish, times.start + minStampLength);
    auto edit = begin();
    edit.make(times);
    commit(edit, "timelineStepResizeTag");
    if (drawingLinks_)
        drawingLinks_->checkLinksAfterResize(stamp, times.start, times.finish);
}

void TimelineDataManager::moveStamp(const StampDragInfo& drag, const Uuid& targetLine) {
    const TimelineLine* source = findLine(drag.lineID);
    const auto index = source ? stampIndex(*source, drag.stampID) : std::nullopt;
    if (!index || drag.lineID == targetLine)
        return;
    TimelineStamp copy = *source->stamps[*index];
    copy.id = Uuid::random();
    copy.isActiveForMapView.reset();
    auto edit = begin();
    edit.make(InsertStamp{targetLine, atEnd, std::move(copy)});
    edit.make(RemoveStamp{drag.lineID, drag.stampID});
    commit(edit, "timelineStepMoveTag");
}

void TimelineDataManager::saveLines() {
    save(*lines, {});
}

void TimelineDataManager::save(const TimelineLines& saved, const EditedLines& edits) {
    if (const VideosData* video = openVideo())
        storage_.saveTimeline(saved, video->id, edits);
}

const VideosData* TimelineDataManager::openVideo() const {
    return *currentBookmark ? library_.findByBookmark(**currentBookmark, currentVideoId_) : nullptr;
}

Uuid TimelineDataManager::ensureDrawingsTimeline() {
    auto edit = begin();
    edit.putDrawingsFirst(drawingsName());
    // A timeline of which no copy could be read is stored only after the user changes it.
    const VideosData* video = openVideo();
    const bool unreadable = video && storage_.isTimelineUnreadable(video->id);
    if (edit.changed())
        commit(edit, {}, unreadable ? Saving::withNextEdit : Saving::now);
    return drawingsLineId();
}

std::string TimelineDataManager::drawingsName() const {
    return firstUpperCased(texts_.text("drawingsTimelineName"));
}

TimelineStep TimelineDataManager::undoStep(const TimelineStep& step) {
    auto edit = begin();
    for (const TimelineChange& change : withoutDeletedDrawings(step.changes))
        edit.makeIfPossible(change);
    TimelineStep again{step.name, edit.inverses(), step.selectionAfter, step.selectionBefore};
    if (again.changes.empty())
        return again;

    // The selection is restored as well, unless the user has selected another line since.
    if (edit.selectedLine() == step.selectionAfter)
        edit.selectLine(step.selectionBefore);
    if (edit.selectedLine() && !lineIndex(edit.lines(), *edit.selectedLine()))
        edit.selectLine(std::nullopt);
    commit(edit);

    if (drawingLinks_)
        for (const TimelineChange& made : again.changes)
            if (const auto* times = std::get_if<SetStampTimes>(&made))
                if (const auto found = findStamp(times->stamp))
                    drawingLinks_->checkLinksAfterResize(times->stamp,
                                                         found->stamp->timeStartSeconds,
                                                         found->stamp->timeFinishSeconds);
    if (std::any_of(again.changes.begin(), again.changes.end(), changesStampCounts))
        events_.post(events::StampCountsChanged{});
    return again;
}

std::vector<TimelineChange> TimelineDataManager::withoutDeletedDrawings(
    std::vector<TimelineChange> changes) const {
    const auto isDeleted = [this](const Cow<TimelineStamp>& stamp) {
        return deletedDrawings_.contains(stamp->idTag);
    };
    std::set<std::string> leftOut;
    for (const TimelineChange& change : changes)
        if (const auto* insert = std::get_if<InsertStamp>(&change);
            insert && isDeleted(insert->stamp))
            leftOut.insert(insert->stamp->idTag);
    std::erase_if(changes, [&](const TimelineChange& change) {
        if (const auto* insert = std::get_if<InsertStamp>(&change))
            return leftOut.contains(insert->stamp->idTag);
        // A move inserts a copy and removes the stamp. Without the copy the stamp must remain.
        const auto* remove = std::get_if<RemoveStamp>(&change);
        const auto found = remove ? findStamp(remove->stamp) : std::nullopt;
        return found && leftOut.contains(found->stamp->idTag);
    });
    for (TimelineChange& change : changes)
        if (auto* insert = std::get_if<InsertLine>(&change);
            insert &&
            std::any_of(insert->line->stamps.begin(), insert->line->stamps.end(), isDeleted))
            std::erase_if(insert->line.write().stamps, isDeleted);
    return changes;
}

const TimelineLine* TimelineDataManager::findLine(const Uuid& line) const {
    const auto index = lineIndex(*lines, line);
    return index ? &*lines.get()[*index] : nullptr;
}

std::optional<TimelineDataManager::Found> TimelineDataManager::findStamp(const Uuid& stamp) const {
    if (!stampPlacesValid_) {
        stampPlaces_.clear();
        for (std::size_t row = 0; row < lines->size(); ++row)
            for (std::size_t i = 0; i < lines.get()[row]->stamps.size(); ++i)
                stampPlaces_.emplace(lines.get()[row]->stamps[i]->id, std::pair(row, i));
        stampPlacesValid_ = true;
    }
    const auto found = stampPlaces_.find(stamp);
    if (found == stampPlaces_.end())
        return std::nullopt;
    const TimelineLine& line = *lines.get()[found->second.first];
    return Found{&line, &*line.stamps[found->second.second]};
}

void TimelineDataManager::handleTagUpdated(const events::TagUpdated& event) {
    if (!event.tagId)
        return;
    const Tag* tag = tagLibrary_.tagById(*event.tagId);
    if (!tag)
        return;
    const std::string name = event.newName.value_or(tag->name);
    const std::string tagId = *event.tagId;
    auto edit = begin();
    edit.renameTag(tagId, name);
    if (edit.changed())
        commit(edit);
    tagRenamed.emit(tagId, name);
}

}  // namespace tembrix
