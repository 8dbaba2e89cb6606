#include "app/control/timeline_canvas.h"

#include <QContextMenuEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/geometry.h"

#include "app/control/timeline_accessible.h"
#include "app/theme/theme.h"
#include "core/control/stamp_gestures.h"

namespace tembrix {

namespace {

constexpr double rowHeight = TimelineMetrics::rowHeight;
constexpr double headerHeight = TimelineMetrics::headerHeight;

}  // namespace

TimelineCanvas::TimelineCanvas(TimelineEditingModel& model, TimelineDataManager& timeline,
                               QWidget* parent)
    : QWidget(parent), model_(model), timeline_(timeline) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    grabGesture(Qt::PinchGesture);
    installTimelineAccessibility();

    subscriptions_.push_back(
        model.rowsChanged.observe([this](const std::vector<std::size_t>& rows) {
            if (model_.rows().size() != rowCount_) {
                rowCount_ = model_.rows().size();
                redrawAll();
                Q_EMIT rowCountChanged();
            }
            for (const std::size_t row : rows) {
                redrawChanged(row);
                announceTimelineRow(*this, row);
            }
            lookUnderPointer();
        }));
    subscriptions_.push_back(
        model.pointedStamp.observe([this](const std::optional<Uuid>&) { followPointed(); }));
    subscriptions_.push_back(
        timeline.selectedLineID.observe([this](const std::optional<Uuid>&) { followSelection(); }));
    subscriptions_.push_back(timeline.selectedStampID.observe(
        [this](const std::optional<Uuid>&) { followSelection(); }));
    subscriptions_.push_back(
        model.cursor.observe([this](const TimelineCursor&) { followCursor(); }));
    subscriptions_.push_back(
        model.tagEdgePosition.observe([this](const std::optional<double>&) { movePlayhead(); }));
    subscriptions_.push_back(model.gestureChanged.observe([this] { followGesture(); }));
    rowCount_ = model.rows().size();
    followSelection();
    refreshAxis();
}

QRectF TimelineCanvas::headerArea() const {
    return {0, 0, static_cast<double>(width()), headerHeight};
}

QRectF TimelineCanvas::rowsArea() const {
    return {0, headerHeight, static_cast<double>(width()), height() - headerHeight};
}

QRectF TimelineCanvas::rowArea(std::size_t row) const {
    return {0, headerHeight + static_cast<double>(row) * rowHeight - scrollY_,
            static_cast<double>(width()), rowHeight};
}

QRectF TimelineCanvas::stampArea(std::size_t row, std::size_t stamp) const {
    const TimelineRow& shown = model_.rows()[row];
    const Rect rect = stampRect(*shown.line->stamps[stamp], shown.levels[stamp], axis_);
    return {rect.x - scrollX_, rowArea(row).top() + rect.y, rect.width, rect.height};
}

std::optional<TimelineHit> TimelineCanvas::hitAt(QPointF position) const {
    if (position.y() < headerHeight)
        return {};
    return model_.rows().hit({position.x() + scrollX_, position.y() - headerHeight + scrollY_},
                             axis_, *timeline_.selectedStampID);
}

void TimelineCanvas::setScroll(double x, double y) {
    if (x == scrollX_ && y == scrollY_)
        return;
    scrollX_ = x;
    scrollY_ = y;
    redrawAll();
    lookUnderPointer();
}

void TimelineCanvas::refreshAxis() {
    const TimelineAxis axis = model_.axis(width());
    if (axis == axis_)
        return;
    if (model_.resize())
        model_.cancelGesture();  // its coordinates refer to the old axis
    axis_ = axis;
    redrawAll();
    lookUnderPointer();
    Q_EMIT axisChanged();
}

void TimelineCanvas::movePlayhead() {
    const double x = playheadX();
    if (x != shownPlayheadX_ && std::holds_alternative<Idle>(press_))
        Q_EMIT playheadMoved(shownPlayheadX_, x);
    const QRectF before = PlayheadPainter::strip(rect(), view(), shownPlayheadX_);
    const QRectF after = PlayheadPainter::strip(rect(), view(), x);
    shownPlayheadX_ = x;
    if (before == after)
        return;
    update(before.toAlignedRect());
    update(after.toAlignedRect());
}

void TimelineCanvas::followSelection() {
    if (*timeline_.selectedStampID != shownStamp_) {
        redrawRowOf(shownStamp_);
        const auto before = std::exchange(shownStamp_, *timeline_.selectedStampID);
        redrawRowOf(shownStamp_);
        announceTimelineSelection(*this, before, shownStamp_);
    }
    if (*timeline_.selectedLineID != shownLine_) {
        for (const auto& line : {shownLine_, *timeline_.selectedLineID})
            if (line)
                redrawRow(model_.rows().indexOfLine(*line));
        const auto before = std::exchange(shownLine_, *timeline_.selectedLineID);
        announceTimelineSelection(*this, before, shownLine_);
    }
}

void TimelineCanvas::followCursor() {
    for (const auto& cursor : {shownCursor_, *model_.cursor}) {
        redrawRowOf(cursor.stamp);
        if (cursor.line)
            redrawRow(model_.rows().indexOfLine(*cursor.line));
    }
    shownCursor_ = *model_.cursor;
    announceCursor();
}

// The stamp under a resting pointer changes with the rows and the view.
void TimelineCanvas::lookUnderPointer() {
    const auto hit = pointer_ ? hitAt(*pointer_) : std::nullopt;
    model_.pointAt(hit && hit->stamp
                       ? std::optional(model_.rows()[hit->row].line->stamps[*hit->stamp]->id)
                       : std::nullopt);
}

void TimelineCanvas::followPointed() {
    redrawRowOf(shownPointed_);
    shownPointed_ = *model_.pointedStamp;
    redrawRowOf(shownPointed_);
}

void TimelineCanvas::followGesture() {
    const StampResize* resize = model_.resize();
    const StampMove* move = model_.move();
    const auto inHand = resize ? std::optional(resize->stamp())
                        : move ? std::optional(move->info().stampID)
                               : std::nullopt;
    if (!inHand) {
        press_ = Idle();
        beyondTimer_.stop();
    }
    if (resize || inHand != shownGesture_) {
        redrawRowOf(shownGesture_);
        redrawRowOf(inHand);
        shownGesture_ = inHand;
    }
    // The moving stamp is painted over the layer, so only its old and its new area are repainted.
    update(shownMoving_);
    shownMoving_ = movingArea();
    update(shownMoving_);
}

QRect TimelineCanvas::movingArea() const {
    const StampMove* move = model_.move();
    const auto stamp =
        move ? model_.rows()[move->row()].stampIndex(move->info().stampID) : std::nullopt;
    if (!stamp)
        return {};
    constexpr double margin = StampSprites::margin;
    return stampArea(move->row(), *stamp)
        .translated(0, move->offsetY())
        .adjusted(-margin, -margin, margin, margin)
        .toAlignedRect();
}

void TimelineCanvas::announceCursor() {
    if (hasFocus())
        announceTimelineCursor(*this);
}

void TimelineCanvas::redrawRow(std::optional<std::size_t> row) {
    if (!row)
        return;
    redraw(*row, rowArea(*row));
}

void TimelineCanvas::redrawChanged(std::size_t row) {
    const auto& changed = model_.rows()[row].changed;
    // A gesture paints a stamp elsewhere than its times say.
    if (!changed || model_.resize() || model_.move())
        redrawRow(row);
    else
        redraw(row, areaOf(*changed, row));
}

void TimelineCanvas::redraw(std::size_t row, const QRectF& part) {
    dirtyRows_[row] |= part;
    update(part.toAlignedRect());
}

// Whole points of the row that contain all stamps within the span, with shadows and grips. A short
// stamp is painted longer, on either side of its times, and has its grips beside that; none is
// painted beyond the ends of the axis.
QRectF TimelineCanvas::areaOf(const TimeSpan& span, std::size_t row) const {
    constexpr double around =
        StampSprites::margin + TimelineMetrics::gripWidth + TimelineMetrics::smallestStampWidth;
    const double from = axis_.x(span.start);
    const double width = std::max(axis_.x(span.finish) - from, TimelineMetrics::smallestStampWidth);
    const double left = std::min(std::max(from, 0.0), axis_.width - width);
    const double right = std::max(from, 0.0) + width;
    QRectF area = rowArea(row);
    area.setLeft(std::floor(left - scrollX_ - around));
    area.setRight(std::ceil(right - scrollX_ + around));
    return area & rowArea(row);
}

void TimelineCanvas::redrawRowOf(const std::optional<Uuid>& stamp) {
    if (!stamp)
        return;
    if (const auto hit = model_.rows().findStamp(*stamp))
        redrawRow(hit->row);
}

void TimelineCanvas::redrawAll() {
    allDirty_ = true;
    shownPlayheadX_ = playheadX();
    shownMoving_ = movingArea();
    update();
}

void TimelineCanvas::renderRow(QPainter& painter, std::size_t row, const QRectF& part,
                               const StampsPainter::Marks& marks) {
    const TimelineRow& shown = model_.rows()[row];
    const bool selected = *timeline_.selectedLineID == shown.line->id;
    painter.setClipRect(part & rowsArea());
    painter.drawPixmap(rowArea(row).topLeft(), ground_[selected ? 1 : 0]);
    StampsPainter::paint(painter, part, view(), shown, marks, sprites_);
}

void TimelineCanvas::renderLayer() {
    const double ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    if (layer_.size() != pixels || layer_.devicePixelRatio() != ratio) {
        layer_ = QPixmap(pixels);
        layer_.setDevicePixelRatio(ratio);
        allDirty_ = true;
    }
    if (!allDirty_ && dirtyRows_.empty())
        return;
    QPainter painter(&layer_);
    const AxisView shown = view();
    if (allDirty_) {
        for (const bool selected : {false, true}) {
            QPixmap& ground = ground_[selected ? 1 : 0];
            ground = QPixmap(pixels.width(), static_cast<int>(rowHeight * ratio));
            ground.setDevicePixelRatio(ratio);
            QPainter onGround(&ground);
            RowGroundPainter::paint(onGround, {0, 0, headerArea().width(), rowHeight}, shown,
                                    selected);
        }
        TimestampsHeaderPainter::paint(painter, headerArea(), shown);
    }

    const StampsPainter::Marks marks{*timeline_.selectedStampID,
                                     hasFocus() ? model_.cursor->stamp : std::nullopt,
                                     *model_.pointedStamp, model_.resize(), model_.move()};
    const std::size_t count = model_.rows().size();
    const auto first = static_cast<std::size_t>(std::max(scrollY_, 0.0) / rowHeight);
    for (std::size_t row = first; row < count && rowArea(row).top() < height(); ++row)
        if (allDirty_)
            renderRow(painter, row, rowArea(row), marks);
        else if (const auto dirty = dirtyRows_.find(row);
                 dirty != dirtyRows_.end() && !dirty->second.isEmpty())
            renderRow(painter, row, dirty->second, marks);
    painter.setClipRect(rowsArea());
    if (allDirty_) {
        const double bottom = std::max(rowArea(count).top(), headerHeight);
        const QRectF below(0, bottom, width(), height() - bottom);
        if (!below.isEmpty()) {
            painter.fillRect(below, theme::background);
            TimeGridPainter::paint(painter, below, shown);
        }
    }
    allDirty_ = false;
    dirtyRows_.clear();
}

void TimelineCanvas::paintEvent(QPaintEvent* event) {
    renderLayer();
    QPainter painter(this);
    const double ratio = layer_.devicePixelRatio();
    for (const QRect& part : event->region())
        painter.drawPixmap(QRectF(part), layer_,
                           {QPointF(part.topLeft()) * ratio, QSizeF(part.size()) * ratio});

    painter.setClipRect(rowsArea());
    if (const StampMove* move = model_.move())
        StampsPainter::paintMoving(painter, rowArea(move->row()), view(),
                                   model_.rows()[move->row()], *move,
                                   *timeline_.selectedStampID == move->info().stampID, sprites_);
    if (hasFocus() && model_.cursor->line)
        if (const auto row = model_.rows().indexOfLine(*model_.cursor->line))
            painter.fillRect(QRectF(0, rowArea(*row).top(), 3, rowHeight - 1), theme::accent);
    painter.setClipping(false);
    const double bottom = headerHeight + model_.rows().height() - scrollY_;
    PlayheadPainter::paint(painter, QRectF(0, 0, width(), std::min(bottom, height() * 1.0)), view(),
                           shownPlayheadX_);
}

void TimelineCanvas::resizeEvent(QResizeEvent*) {
    refreshAxis();
    redrawAll();
}

void TimelineCanvas::changeEvent(QEvent* event) {
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        model_.cancelGesture();
    QWidget::changeEvent(event);
}

void TimelineCanvas::focusInEvent(QFocusEvent* event) {
    redrawRowOf(model_.cursor->stamp);
    announceCursor();
    QWidget::focusInEvent(event);
}

void TimelineCanvas::focusOutEvent(QFocusEvent* event) {
    redrawRowOf(model_.cursor->stamp);
    QWidget::focusOutEvent(event);
}

}  // namespace tembrix
