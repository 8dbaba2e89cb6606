#include "core/control/timeline_editing_model.h"

#include <algorithm>
#include <fmt/format.h>

#include "core/notifications/events.h"

namespace tembrix {

TimelineEditingModel::TimelineEditingModel(TimelineDataManager& timeline,
                                           const TagLibraryManager& tagLibrary,
                                           MarkupModeStore& markupModes, Playhead& playhead,
                                           const FocusStateManager& focus, UserDefaults& defaults,
                                           Scheduler& scheduler, EventBus& events)
    : markupMode(markupModes.currentMarkupMode()),
      editing(timeline, tagLibrary, defaults, scheduler),
      timeline_(timeline),
      tagLibrary_(tagLibrary),
      markupModes_(markupModes),
      playhead_(playhead),
      focus_(focus),
      events_(events),
      dragSeek_(playhead, scheduler) {
    rows_.update(*timeline.lines);
    lines_ = timeline.lines.observe([this](const TimelineLines& lines) { takeLines(lines); });
}

void TimelineEditingModel::appear() {
    onScreen_ = true;
    markupMode.set(markupModes_.currentMarkupMode());
    subscriptions_.clear();
    subscriptions_.push_back(
        events_.observe<events::EditorModeChanged>([this](const events::EditorModeChanged& event) {
            if (event.active)
                isEditorModeActive.set(*event.active);
        }));
    subscriptions_.push_back(events_.observe<events::ScreenshotDisplayChanged>(
        [this](const events::ScreenshotDisplayChanged& event) {
            if (event.active)
                isScreenshotDisplayActive.set(*event.active);
        }));
    subscriptions_.push_back(
        events_.observe<events::MarkupModeChanged>([this](const events::MarkupModeChanged& event) {
            markupMode.set(event.mode ? *event.mode : markupModes_.currentMarkupMode());
        }));
    subscriptions_.push_back(events_.observe<events::TimelineStampHoverChanged>(
        [this](const events::TimelineStampHoverChanged& event) {
            hoveredStampInfo.set(event.stampInfo);
        }));
}

void TimelineEditingModel::disappear() {
    cancelGesture();
    onScreen_ = false;
    subscriptions_.clear();
}

void TimelineEditingModel::takeLines(const TimelineLines& lines) {
    const auto changed = rows_.update(lines);
    // A gesture is canceled if its stamp was removed or its row has changed.
    const bool lost = resize() ? !rows_.findStamp(resize()->stamp())
                      : move() ? move()->row() >= rows_.size() ||
                                     !rows_[move()->row()].stampIndex(move()->info().stampID)
                               : false;
    if (lost)
        cancelGesture();
    rowsChanged.emit(changed);
    // The hovered stamp may have been changed or removed.
    if (hovered_ && hoverText(hovered_) != *hoveredStampInfo)
        showHover(hovered_);
}

TimelineAxis TimelineEditingModel::axis(double available) const {
    return TimelineAxis::make(maxDuration(playhead_), *timelineScale * *magnifyScale, available);
}

double TimelineEditingModel::playheadX(const TimelineAxis& axis) const {
    if (*tagEdgePosition)
        return **tagEdgePosition;
    return axis.duration > 0 ? axis.x(playhead_.currentTime()) : 0;
}

void TimelineEditingModel::zoomIn() {
    zoomTo(*timelineScale + zoomStep);
}

void TimelineEditingModel::zoomOut() {
    zoomTo(*timelineScale - zoomStep);
}

void TimelineEditingModel::magnify(double magnification) {
    if (resize())
        return;
    magnifyScale.set(magnification);
    zoomChanged.emit();
}

void TimelineEditingModel::endMagnify() {
    const double scale = *timelineScale * *magnifyScale;
    magnifyScale.set(1.0);
    zoomTo(scale);
}

void TimelineEditingModel::zoomTo(double scale) {
    if (resize())
        return;
    timelineScale.set(std::max(scale, smallestScale));
    zoomChanged.emit();
}

std::string TimelineEditingModel::zoomText() const {
    return fmt::format("{:.1f}x", std::max(*timelineScale * *magnifyScale, smallestScale));
}

void TimelineEditingModel::selectLine(const Uuid& line) {
    if (*markupMode == MarkupMode::standard)
        timeline_.selectLine(line);
}

void TimelineEditingModel::dropLine(const std::string& text,
                                    const std::optional<Uuid>& currentLine) {
    const auto line = Uuid::parse(text);
    if (line && line != currentLine)
        timeline_.moveLine(*line, currentLine);
}

void TimelineEditingModel::moveLineBy(const Uuid& line, int step) {
    const auto row = rows_.indexOfLine(line);
    if (!row)
        return;
    // Moving a line down is moving the next one above it.
    if (step < 0 && *row > 0)
        timeline_.moveLine(line, rows_[*row - 1].line->id);
    else if (step > 0 && *row + 1 < rows_.size())
        timeline_.moveLine(rows_[*row + 1].line->id, line);
}

void TimelineEditingModel::clickStamp(const Uuid& line, const Uuid& stamp) {
    const auto hit = rows_.findStamp(stamp);
    if (resize() || !hit)
        return;
    const TimelineStamp clicked = *rows_[hit->row].line->stamps[*hit->stamp];
    cursor.set({line, stamp});
    dragSeek_.drop();
    playhead_.seek(clicked.timeStartSeconds);
    timeline_.selectStamp(stamp);
    playhead_.play();
}

void TimelineEditingModel::clickBackground() {
    timeline_.selectStamp(std::nullopt);
}

void TimelineEditingModel::seekTo(double x, const TimelineAxis& axis) {
    dragSeek_.seek(std::clamp(axis.time(x), 0.0, axis.duration));
}

void TimelineEditingModel::removeStamp(const Uuid& line, const Uuid& stamp) {
    timeline_.removeStamp(line, stamp);
    if (*timeline_.selectedStampID == stamp)
        timeline_.selectStamp(std::nullopt);
}

void TimelineEditingModel::beginResize(const Uuid& line, const Uuid& stamp, ResizeEdge edge,
                                       const TimelineAxis& axis) {
    const auto hit = rows_.findStamp(stamp);
    if (!hit)
        return;
    gesture_.emplace<StampResize>(line, *rows_[hit->row].line->stamps[*hit->stamp], edge, axis);
    playhead_.setResizingTag(true);
    gestureChanged.emit();
}

void TimelineEditingModel::changeResize(double dx) {
    auto* resizing = std::get_if<StampResize>(&gesture_);
    if (!resizing || !resizing->change(dx))
        return;
    tagEdgePosition.set(resizing->edgeX());
    dragSeek_.seek(resizing->edgeTime());
    gestureChanged.emit();
}

void TimelineEditingModel::endResize() {
    if (!resize())
        return;
    const StampResize done = *resize();
    const bool left = done.edge() == ResizeEdge::left;
    const std::optional<double> time = done.finalTime();
    timeline_.updateStampTimes(done.line(), done.stamp(), left ? time : std::nullopt,
                               left ? std::nullopt : time);
    endResizing();
}

void TimelineEditingModel::endResizing() {
    gesture_ = std::monostate();
    playhead_.setResizingTag(false);
    tagEdgePosition.set({});
    gestureChanged.emit();
}

void TimelineEditingModel::beginMove(const Uuid& line, const Uuid& stamp) {
    const auto row = rows_.indexOfLine(line);
    if (!row || !rows_[*row].stampIndex(stamp))
        return;
    gesture_.emplace<StampMove>(StampDragInfo{line, stamp}, *row, rows_.size());
    gestureChanged.emit();
}

void TimelineEditingModel::changeMove(double dy) {
    if (auto* moving = std::get_if<StampMove>(&gesture_)) {
        moving->change(dy);
        gestureChanged.emit();
    }
}

void TimelineEditingModel::endMove(double y) {
    if (!move())
        return;
    const StampMove done = *move();
    gesture_ = std::monostate();
    const std::size_t target = done.targetRow(y);
    // The rows may have changed during the drag.
    if (target < rows_.size() && rows_[target].line->id != done.info().lineID)
        timeline_.moveStamp(done.info(), rows_[target].line->id);
    gestureChanged.emit();
}

void TimelineEditingModel::cancelGesture() {
    if (resize()) {
        dragSeek_.drop();
        endResizing();
    } else if (move()) {
        gesture_ = std::monostate();
        gestureChanged.emit();
    }
}

void TimelineEditingModel::hover(double timestamp, double x, double fromTop,
                                 const TimelineAxis& axis) {
    if (lastUpdateTime_ && timestamp - *lastUpdateTime_ < updateInterval)
        return;
    lastUpdateTime_ = timestamp;
    if (axis.duration <= 0 || axis.width <= 0 || fromTop <= TimelineMetrics::headerHeight)
        return showHover({});
    const auto row = static_cast<std::size_t>((fromTop - TimelineMetrics::headerHeight) /
                                              TimelineMetrics::rowHeight);
    if (row >= rows_.size())
        return showHover({});
    const double time = std::clamp(axis.time(std::clamp(x, 0.0, axis.width)), 0.0, axis.duration);
    const TimelineStamp* stamp = stampAt(*rows_[row].line, time);
    showHover(stamp ? std::optional(stamp->id) : std::nullopt);
}

void TimelineEditingModel::hoverEnded() {
    showHover({});
}

void TimelineEditingModel::showHover(const std::optional<Uuid>& stamp) {
    hovered_ = stamp;
    events_.post(events::TimelineStampHoverChanged{hoverText(stamp)});
}

void TimelineEditingModel::pointAt(const std::optional<Uuid>& stamp) {
    pointedStamp.setIfChanged(stamp);
}

std::optional<std::string> TimelineEditingModel::pointedStampInfo() const {
    if (*pointedStamp == hovered_)
        return std::nullopt;
    return hoverText(*pointedStamp);
}

std::optional<std::string> TimelineEditingModel::hoverText(const std::optional<Uuid>& stamp) const {
    const auto hit = stamp ? rows_.findStamp(*stamp) : std::nullopt;
    if (!hit)
        return std::nullopt;
    const TimelineLine& line = *rows_[hit->row].line;
    return stampHoverText(line, *line.stamps[*hit->stamp], tagLibrary_);
}

bool TimelineEditingModel::canRemoveSelectedStamp() const {
    return onScreen_ && !*focus_.isAnyTextFieldFocused && *timeline_.selectedStampID;
}

void TimelineEditingModel::removeSelectedStamp() {
    if (!canRemoveSelectedStamp())
        return;
    const Uuid stamp = **timeline_.selectedStampID;
    if (const auto hit = rows_.findStamp(stamp))
        timeline_.removeStamp(rows_[hit->row].line->id, stamp);
}

void TimelineEditingModel::moveCursorAcross(int step) {
    goTo(cursorAcrossLines(rows_, *cursor, step, playhead_.currentTime()));
}

void TimelineEditingModel::moveCursorAlong(int step) {
    goTo(cursorAlongLine(rows_, *cursor, step, playhead_.currentTime()));
}

void TimelineEditingModel::goTo(const TimelineCursor& place) {
    cursor.set(place);
    showHover(place.stamp);  // shows the stamp's text as for the mouse pointer
}

void TimelineEditingModel::activateCursor() {
    const TimelineCursor at = *cursor;
    if (at.stamp && rows_.findStamp(*at.stamp))
        clickStamp(*at.line, *at.stamp);
    else if (at.line && rows_.indexOfLine(*at.line))
        selectLine(*at.line);
}

void TimelineEditingModel::nudgeCursor(ResizeEdge edge, int step) {
    const auto hit = cursor->stamp ? rows_.findStamp(*cursor->stamp) : std::nullopt;
    if (!hit)
        return;
    const Uuid line = rows_[hit->row].line->id;
    const TimelineStamp stamp = *rows_[hit->row].line->stamps[*hit->stamp];
    const bool left = edge == ResizeEdge::left;
    const double from = left ? stamp.timeStartSeconds : stamp.timeFinishSeconds;
    const double time = std::clamp(from + step * nudge, 0.0, maxDuration(playhead_));
    timeline_.updateStampTimes(line, stamp.id, left ? std::optional(time) : std::nullopt,
                               left ? std::nullopt : std::optional(time));
    dragSeek_.seek(time);
}

void TimelineEditingModel::moveCursorStamp(int step) {
    const auto hit = cursor->stamp ? rows_.findStamp(*cursor->stamp) : std::nullopt;
    if (!hit || (step < 0 && hit->row == 0) || (step > 0 && hit->row + 1 >= rows_.size()))
        return;
    const std::size_t row = step < 0 ? hit->row - 1 : hit->row + 1;
    const Uuid target = rows_[row].line->id;
    timeline_.moveStamp({rows_[hit->row].line->id, *cursor->stamp}, target);
    // The moved stamp has a new id and is the last one on its new line.
    if (const auto moved = rows_.indexOfLine(target))
        if (!rows_[*moved].line->stamps.empty())
            goTo({target, rows_[*moved].line->stamps.back()->id});
}

}  // namespace tembrix
