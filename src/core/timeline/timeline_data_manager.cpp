#include "core/timeline/timeline_data_manager.h"

#include <algorithm>
#include <unordered_set>

#include "base/cow.h"
#include "base/utf8_text.h"

#include "core/records/markup_mode.h"
#include "core/records/video_records.h"

namespace tembrix {

namespace {

// A document written by another hand may repeat an id; the later record gets a fresh one, so that
// every edit finds exactly one.
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
    linesChanged_ = lines.observe([this](const TimelineLines&) { stampPlacesValid_ = false; });
    tagUpdated_ = events_.observe<events::TagUpdated>(
        [this](const events::TagUpdated& event) { handleTagUpdated(event); });
}

void TimelineDataManager::openTimeline(const Bytes& bookmark, TimelineLines loaded,
                                       const std::string& videoId) {
    makeIdsUnique(loaded);
    openStep_.clear();
    currentBookmark = bookmark;
    currentVideoId_ = videoId;
    lines.set(std::move(loaded));
    const bool selects = markupMode_.currentMarkupMode() == MarkupMode::standard && !lines->empty();
    selectedLineID.set(selects ? std::optional(lines->front()->id) : std::nullopt);
    storage_.prepareToSave(*lines);
    ensureDrawingsTimeline();
    replaced.emit();
}

void TimelineDataManager::replaceLines(TimelineLines replacement) {
    makeIdsUnique(replacement);
    openStep_.clear();
    lines.set(std::move(replacement));
    ensureDrawingsTimeline();
    if (selectedLineID.get() && !findLine(*selectedLineID.get()))
        selectedLineID.set(std::nullopt);
    store();
    replaced.emit();
    events_.post(events::StampCountsChanged{});
}

void TimelineDataManager::selectLine(const Uuid& line) {
    if (markupMode_.currentMarkupMode() == MarkupMode::standard)
        selectedLineID.set(line);
}

void TimelineDataManager::addLine(const std::string& name) {
    if (markupMode_.currentMarkupMode() != MarkupMode::standard)
        return;
    const auto selected = selectedLineID.get();
    const Uuid id = Uuid::random();
    addToStep(change({InsertLine{lines->size(), TimelineLine{id, name, {}, {}}}}));
    selectedLineID.set(id);
    endStep("timelineStepAddTimeline", selected);
}

Uuid TimelineDataManager::lineForTag(const Tag& tag) {
    for (const auto& line : *lines)
        if (line->tagIdForMode == tag.id)
            return line->id;
    const Uuid id = Uuid::random();
    addToStep(change({InsertLine{lines->size(), TimelineLine{id, tag.name, {}, tag.id}}}));
    return id;
}

void TimelineDataManager::deleteLine(const Uuid& line) {
    if (line == drawingsLineId())
        return;
    const auto selected = selectedLineID.get();
    const TimelineLine* found = findLine(line);
    const bool countsChange = found && !found->stamps.empty();
    if (selected == line)
        selectedLineID.set(std::nullopt);
    addToStep(change({RemoveLine{line}}));
    endStep("timelineStepDeleteTimeline", selected);
    if (countsChange)
        events_.post(events::StampCountsChanged{});
}

void TimelineDataManager::renameLine(const Uuid& line, const std::string& name) {
    if (line == drawingsLineId() || !findLine(line))
        return;
    addToStep(change({RenameLine{line, name, {}}}));
    endStep("timelineStepRenameTimeline", selectedLineID.get());
}

void TimelineDataManager::moveLine(const Uuid& line, const std::optional<Uuid>& above) {
    const auto source = lineIndex(*lines, line);
    const auto target = above ? lineIndex(*lines, *above) : lines->size();
    if (!source || !target || source == target)
        return;
    const std::size_t index = *target - (*source < *target ? 1 : 0);
    if (lines->front()->id == drawingsLineId() && (*source == 0 || index == 0))
        return;
    auto inverses = change({MoveLine{line, index}});
    if (!inverses.empty())
        edited.emit({"timelineStepReorderTimelines", std::move(inverses), selectedLineID.get(),
                     selectedLineID.get()});
}

bool TimelineDataManager::appendStamp(const Uuid& line, TimelineStamp stamp) {
    const TimelineLine* found = findLine(line);
    if (!found)
        return false;
    const bool drawing = line == drawingsLineId() && isDrawingStamp(stamp);
    auto inverses = change({InsertStamp{line, found->stamps.size(), std::move(stamp)}});
    if (drawing)
        store();  // its files stay whatever is taken back, and so does the stamp
    else {
        addToStep(std::move(inverses));
        endStep("timelineStepMark", selectedLineID.get());
    }
    return true;
}

void TimelineDataManager::removeStamp(const Uuid& line, const Uuid& stamp) {
    const TimelineLine* found = findLine(line);
    if (!found)
        return;
    bool filesGone = false;
    if (const auto index = stampIndex(*found, stamp); index && line == drawingsLineId()) {
        const TimelineStamp& removed = *found->stamps[*index];
        filesGone = isDrawingStamp(removed);
        if (drawingLinks_)
            drawingLinks_->deleteDrawingFiles(std::string(removed.label));
    }
    auto inverses = change({RemoveStamp{line, stamp}});
    if (filesGone)
        store();
    else {
        addToStep(std::move(inverses));
        endStep("timelineStepDeleteTag", selectedLineID.get());
    }
    events_.post(events::StampCountsChanged{});
}

void TimelineDataManager::setStampLabels(const Uuid& line, const Uuid& stamp,
                                         std::vector<std::string> labels) {
    const TimelineLine* found = findLine(line);
    if (!found || !stampIndex(*found, stamp))
        return;
    addToStep(change({SetStampLabels{line, stamp, std::move(labels)}}));
    endStep("timelineStepEditLabels", selectedLineID.get());
}

void TimelineDataManager::setStampTimeEvents(const Uuid& line, const Uuid& stamp,
                                             std::vector<std::string> events) {
    const TimelineLine* found = findLine(line);
    if (!found || !stampIndex(*found, stamp))
        return;
    addToStep(change({SetStampTimeEvents{line, stamp, std::move(events)}}));
    endStep("timelineStepEditTimeEvents", selectedLineID.get());
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
    addToStep(change({times}));
    endStep("timelineStepResizeTag", selectedLineID.get());
    if (drawingLinks_)
        drawingLinks_->checkLinksAfterResize(stamp, times.start, times.finish);
}

void TimelineDataManager::moveStamp(const StampDragInfo& drag, const Uuid& targetLine) {
    const TimelineLine* source = findLine(drag.lineID);
    const TimelineLine* target = findLine(targetLine);
    if (!source || !target || source == target)
        return;
    const auto index = stampIndex(*source, drag.stampID);
    if (!index)
        return;
    TimelineStamp copy = *source->stamps[*index];
    copy.id = Uuid::random();
    copy.isActiveForMapView.reset();
    addToStep(change({InsertStamp{targetLine, target->stamps.size(), std::move(copy)},
                      RemoveStamp{drag.lineID, drag.stampID}}));
    endStep("timelineStepMoveTag", selectedLineID.get());
}

void TimelineDataManager::saveLines() {
    // A line made for a tag that got no stamp after all is a step of its own.
    if (openStep_.empty())
        store();
    else
        endStep("timelineStepAddTimeline", selectedLineID.get());
}

void TimelineDataManager::store() {
    if (!currentBookmark)
        return;
    if (const VideosData* video = library_.findByBookmark(*currentBookmark, currentVideoId_))
        storage_.saveTimeline(*lines, video->id);
}

Uuid TimelineDataManager::ensureDrawingsTimeline() {
    const Uuid id = drawingsLineId();
    const auto index = lineIndex(*lines, id);
    if (index == 0u)
        return id;
    if (index)
        change({MoveLine{id, 0}});
    else
        change({InsertLine{
            0, TimelineLine{id, firstUpperCased(texts_.text("drawingsTimelineName")), {}, {}}}});
    store();
    return id;
}

std::vector<TimelineChange> TimelineDataManager::change(
    const std::vector<TimelineChange>& changes) {
    // The list of lines is copied, not the lines: no observer sees an edit half made.
    TimelineLines changed = *lines;
    auto inverses = applyChanges(changed, changes);
    if (!inverses.empty())
        lines.set(std::move(changed));
    return inverses;
}

void TimelineDataManager::addToStep(std::vector<TimelineChange> inverses) {
    // What was done last is taken back first.
    inverses.insert(inverses.end(), std::make_move_iterator(openStep_.begin()),
                    std::make_move_iterator(openStep_.end()));
    openStep_ = std::move(inverses);
}

void TimelineDataManager::endStep(std::string_view name, std::optional<Uuid> selectionBefore) {
    store();
    auto step = std::exchange(openStep_, {});
    if (!step.empty())
        edited.emit({name, std::move(step), selectionBefore, selectedLineID.get()});
}

TimelineEdit TimelineDataManager::takeBack(const TimelineEdit& edit) {
    TimelineEdit again{edit.name, change(withDrawingsThatExist(edit.changes)), edit.selectionAfter,
                       edit.selectionBefore};
    if (again.changes.empty())
        return again;

    // The selection goes back as well, unless the user has selected something else since.
    auto selected = selectedLineID.get();
    if (selected == edit.selectionAfter)
        selected = edit.selectionBefore;
    if (selected && !findLine(*selected))
        selected.reset();
    if (selected != selectedLineID.get())
        selectedLineID.set(selected);

    store();
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

std::vector<TimelineChange> TimelineDataManager::withDrawingsThatExist(
    std::vector<TimelineChange> changes) const {
    const auto isGone = [this](const Cow<TimelineStamp>& stamp) {
        return isDrawingStamp(*stamp) &&
               !(drawingLinks_ && drawingLinks_->drawingExists(stamp->label));
    };
    std::erase_if(changes, [&](const TimelineChange& made) {
        const auto* insert = std::get_if<InsertStamp>(&made);
        return insert && isGone(insert->stamp);
    });
    for (TimelineChange& made : changes)
        if (auto* insert = std::get_if<InsertLine>(&made);
            insert && std::any_of(insert->line->stamps.begin(), insert->line->stamps.end(), isGone))
            std::erase_if(insert->line.write().stamps, isGone);
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
    TimelineLines renamed = *lines;
    bool changed = false;
    for (auto& line : renamed)
        changed |= renameTagIn(line, tagId, name);
    if (changed) {
        lines.set(std::move(renamed));
        store();
    }
    tagRenamed.emit(tagId, name);
}

}  // namespace tembrix
