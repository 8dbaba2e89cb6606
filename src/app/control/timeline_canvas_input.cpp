// Mouse, gesture and keyboard input of the canvas.

#include <QContextMenuEvent>
#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>

#include "app/control/timeline_canvas.h"
#include "core/control/stamp_gestures.h"
#include "core/records/timeline_records.h"

namespace tembrix {

namespace {

constexpr double headerHeight = TimelineMetrics::headerHeight;
constexpr int scrollInterval = 30;           // milliseconds, during a drag outside the view
constexpr double moveThreshold = 10;         // points after which a press becomes a drag
constexpr double wheelMagnification = 1.15;  // per notch

}  // namespace

void TimelineCanvas::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    const QPointF at = event->position();
    if (at.y() < headerHeight) {
        press_ = Scrubbing();
        model_.seekTo(at.x() + scrollX_, axis_);
        return;
    }
    const auto hit = hitAt(at);
    if (!hit)
        return;
    const TimelineLine& line = *model_.rows()[hit->row].line;
    Pressed pressed{at, line.id, {}, hit->grip};
    if (hit->stamp)
        pressed.stamp = line.stamps[*hit->stamp]->id;
    press_ = pressed;
}

void TimelineCanvas::mouseMoveEvent(QMouseEvent* event) {
    const QPointF at = event->position();
    if (event->buttons() != Qt::NoButton)
        return dragTo(at);
    // The release event was lost, for example to a menu.
    if (!std::holds_alternative<Idle>(press_)) {
        press_ = Idle();
        beyondTimer_.stop();
        model_.cancelGesture();
    }
    showPointer(*event);
}

QPointF TimelineCanvas::beyond(QPointF at) const {
    const auto past = [](double x, double from, double to) {
        return x < from ? x - from : std::max(x - to, 0.0);
    };
    if (std::holds_alternative<Scrubbing>(press_) || std::holds_alternative<Resizing>(press_))
        return {past(at.x(), 0, width()), 0};
    if (std::holds_alternative<Moving>(press_))
        return {0, past(at.y(), headerHeight, height())};
    return {};
}

void TimelineCanvas::timerEvent(QTimerEvent* event) {
    if (event->timerId() == beyondTimer_.timerId())
        dragTo(dragged_);
}

void TimelineCanvas::dragTo(QPointF at) {
    dragged_ = at;
    const QPointF by = beyond(at);
    if (by.isNull()) {
        beyondTimer_.stop();
    } else {
        Q_EMIT draggedBeyond(by);
        if (!beyondTimer_.isActive())
            beyondTimer_.start(scrollInterval, this);
    }
    const double x = at.x() + scrollX_;
    if (std::holds_alternative<Scrubbing>(press_))
        return model_.seekTo(x, axis_);

    if (const auto* pressed = std::get_if<Pressed>(&press_); pressed && pressed->stamp) {
        const Pressed from = *pressed;
        const QPointF way = at - from.at;
        if (from.grip) {
            press_ = Resizing{from.at.x() + scrollX_};
            model_.beginResize(from.line, *from.stamp, *from.grip, axis_);
        } else if (std::hypot(way.x(), way.y()) >= moveThreshold) {
            press_ = Moving{from.at.y() + scrollY_};
            model_.beginMove(from.line, *from.stamp);
        }
    }
    if (auto* resizing = std::get_if<Resizing>(&press_); resizing && model_.resize()) {
        // The grip follows its edge, so movements are measured from the edge's actual position.
        const auto edge = [this] {
            const StampResize& resize = *model_.resize();
            return resize.edge() == ResizeEdge::left ? resize.x() : resize.x() + resize.width();
        };
        const double before = edge();
        model_.changeResize(x - resizing->anchor);
        resizing->anchor += edge() - before;
    } else if (const auto* moving = std::get_if<Moving>(&press_)) {
        model_.changeMove(at.y() + scrollY_ - moving->pressed);
    }
}

void TimelineCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    const Press press = std::exchange(press_, Idle());
    beyondTimer_.stop();
    if (const auto* pressed = std::get_if<Pressed>(&press)) {
        if (pressed->stamp)
            model_.clickStamp(pressed->line, *pressed->stamp);
        else
            model_.clickBackground();
    } else if (std::holds_alternative<Resizing>(press)) {
        model_.endResize();
    } else if (std::holds_alternative<Moving>(press) && model_.move()) {
        model_.endMove(event->position().y() - rowArea(model_.move()->row()).top());
    }
    showPointer(*event);
}

void TimelineCanvas::leaveEvent(QEvent* event) {
    pointer_.reset();
    lookUnderPointer();
    model_.hoverEnded();
    QWidget::leaveEvent(event);
}

void TimelineCanvas::showPointer(const QMouseEvent& event) {
    const QPointF at = event.position();
    const auto hit = hitAt(at);
    if (hit && hit->grip)
        setCursor(Qt::SizeHorCursor);
    else if (hit && hit->stamp)
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
    pointer_ = at;
    if (!isActiveWindow()) {
        lookUnderPointer();
        return;
    }
    const double fromTop = at.y() > headerHeight ? at.y() + scrollY_ : at.y();
    model_.hover(static_cast<double>(event.timestamp()) / 1000, at.x() + scrollX_, fromTop, axis_);
    lookUnderPointer();
}

bool TimelineCanvas::event(QEvent* event) {
    return handleGesture(event) || QWidget::event(event);
}

bool TimelineCanvas::handleGesture(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        auto* native = static_cast<QNativeGestureEvent*>(event);
        switch (native->gestureType()) {
            case Qt::BeginNativeGesture:
                pinch_ = 1;
                return true;
            case Qt::ZoomNativeGesture:
                pinch_ *= 1 + native->value();
                Q_EMIT pinched(pinch_, native->position().x());
                return true;
            case Qt::EndNativeGesture:
                pinch_ = 1;
                Q_EMIT pinchEnded();
                return true;
            default:
                return false;
        }
    }
    if (event->type() == QEvent::Gesture) {
        auto* gesture = static_cast<QGestureEvent*>(event)->gesture(Qt::PinchGesture);
        if (!gesture)
            return false;
        auto* pinch = static_cast<QPinchGesture*>(gesture);
        Q_EMIT pinched(pinch->totalScaleFactor(),
                       mapFromGlobal(pinch->centerPoint().toPoint()).x());
        if (pinch->state() == Qt::GestureFinished || pinch->state() == Qt::GestureCanceled)
            Q_EMIT pinchEnded();
        return true;
    }
    return false;
}

void TimelineCanvas::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier))
        return event->ignore();  // the parent scrolls
    // Ctrl with the wheel zooms like a pinch gesture, for users without a touch pad.
    Q_EMIT pinched(std::pow(wheelMagnification, event->angleDelta().y() / 120.0),
                   event->position().x());
    Q_EMIT pinchEnded();
}

void TimelineCanvas::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool plain = modifiers == Qt::NoModifier;
    const bool alt = modifiers == Qt::AltModifier;
    const bool control = modifiers == Qt::ControlModifier;
    const auto step = [&](int by) {
        const bool across = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
        const TimelineCursor before = *model_.cursor;
        if (plain)
            across ? model_.moveCursorAcross(by) : model_.moveCursorAlong(by);
        else if (alt)
            across ? model_.moveCursorStamp(by) : model_.nudgeCursor(ResizeEdge::left, by);
        else if (control && !across)
            model_.nudgeCursor(ResizeEdge::right, by);
        else
            event->ignore();
        if (*model_.cursor != before)
            Q_EMIT cursorMoved();
    };
    switch (event->key()) {
        case Qt::Key_Up:
        case Qt::Key_Left:
            return step(-1);
        case Qt::Key_Down:
        case Qt::Key_Right:
            return step(+1);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (plain)
                return model_.activateCursor();
            break;
        case Qt::Key_Escape:
            if (model_.resize() || model_.move())
                model_.cancelGesture();
            else
                model_.clickBackground();
            return;
        default:
            break;
    }
    QWidget::keyPressEvent(event);
}

void TimelineCanvas::contextMenuEvent(QContextMenuEvent* event) {
    if (!std::holds_alternative<Idle>(press_))
        return;  // a drag is in progress
    auto hit = hitAt(event->pos());
    QPoint at = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        const auto& stamp = model_.cursor->stamp;
        hit = stamp ? model_.rows().findStamp(*stamp) : std::nullopt;
        if (hit)
            at = mapToGlobal(stampArea(hit->row, *hit->stamp).bottomLeft().toPoint());
    }
    if (!hit || !hit->stamp)
        return event->ignore();
    const TimelineLine& line = *model_.rows()[hit->row].line;
    Q_EMIT stampMenuRequested(line.id, line.stamps[*hit->stamp]->id, at);
}

void TimelineCanvas::openStampMenu(const TimelineHit& hit) {
    const TimelineLine& line = *model_.rows()[hit.row].line;
    Q_EMIT stampMenuRequested(line.id, line.stamps[*hit.stamp]->id,
                              mapToGlobal(stampArea(hit.row, *hit.stamp).bottomLeft().toPoint()));
}

}  // namespace tembrix
