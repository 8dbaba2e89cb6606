#include "app/control/timeline_accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <map>

#include "base/shortened.h"
#include "base/uuid.h"

#include "app/control/timeline_canvas.h"
#include "app/widgets/qt_text.h"
#include "core/control/timeline_cursor.h"
#include "core/control/timeline_rows.h"

namespace tembrix {

namespace {

// A part of the canvas without a widget of its own: a line or one of its stamps, identified by its
// id. It becomes invalid when the line or the stamp is removed.
class TimelinePart : public QAccessibleInterface {
  public:
    TimelinePart(TimelineCanvas* canvas, const Uuid& id) : canvas_(canvas), id_(id) {}

    bool isValid() const override { return canvas_ && hit(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override {
        return canvas_ ? canvas_->window()->windowHandle() : nullptr;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        for (int i = 0; i < childCount(); ++i)
            if (child(i)->rect().contains(x, y))
                return child(i);
        return nullptr;
    }
    void setText(QAccessible::Text, const QString&) override {}
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        state.focusable = true;
        state.selectable = true;
        state.disabled = canvas_ && !canvas_->isEnabled();
        state.focused = isCursor() && canvas_->hasFocus();
        return state;
    }
    QRect rect() const override {
        if (!isValid())
            return {};
        const auto at = hit();
        const QRectF area =
            at->stamp ? canvas_->stampArea(at->row, *at->stamp) : canvas_->rowArea(at->row);
        return {canvas_->mapToGlobal(area.topLeft().toPoint()), area.size().toSize()};
    }

  protected:
    virtual std::optional<TimelineHit> hit() const = 0;
    virtual bool isCursor() const = 0;
    const TimelineRow& row() const { return canvas_->model().rows()[hit()->row]; }

    QPointer<TimelineCanvas> canvas_;
    Uuid id_;
};

class CanvasAccessible;

class StampAccessible final : public TimelinePart {
  public:
    using TimelinePart::TimelinePart;

    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name || !isValid())
            return {};
        return qtext(stampAccessibleText(*row().line->stamps[*hit()->stamp]));
    }
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* parent() const override;

  protected:
    std::optional<TimelineHit> hit() const override {
        return canvas_->model().rows().findStamp(id_);
    }
    bool isCursor() const override { return canvas_ && canvas_->model().cursor->stamp == id_; }
};

class LineAccessible final : public TimelinePart {
  public:
    using TimelinePart::TimelinePart;

    QAccessible::Role role() const override { return QAccessible::List; }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && isValid() ? qtext(shortened(row().line->name))
                                                      : QString();
    }
    int childCount() const override {
        return isValid() ? static_cast<int>(row().line->stamps.size()) : 0;
    }
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* part) const override {
        for (int i = 0; i < childCount(); ++i)
            if (child(i) == part)
                return i;
        return -1;
    }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(canvas_);
    }

  protected:
    std::optional<TimelineHit> hit() const override {
        const auto index = canvas_->model().rows().indexOfLine(id_);
        return index ? std::optional(TimelineHit{*index, {}, {}}) : std::nullopt;
    }
    bool isCursor() const override {
        return canvas_ && canvas_->model().cursor->line == id_ && !canvas_->model().cursor->stamp;
    }
};

class CanvasAccessible final : public QAccessibleWidget {
  public:
    explicit CanvasAccessible(TimelineCanvas* canvas)
        : QAccessibleWidget(canvas, QAccessible::List), canvas_(canvas) {}
    ~CanvasAccessible() override { forget(); }

    int childCount() const override { return static_cast<int>(canvas_->model().rows().size()); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        return part<LineAccessible>(
            canvas_->model().rows()[static_cast<std::size_t>(index)].line->id);
    }
    int indexOfChild(const QAccessibleInterface* part) const override {
        for (int i = 0; i < childCount(); ++i)
            if (child(i) == part)
                return i;
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        const QPoint at = canvas_->mapFromGlobal(QPoint(x, y));
        for (int i = 0; i < childCount(); ++i)
            if (canvas_->rowArea(static_cast<std::size_t>(i)).contains(at))
                return child(i);
        return nullptr;
    }
    QAccessibleInterface* focusChild() const override {
        const TimelineCursor& cursor = *canvas_->model().cursor;
        if (!canvas_->hasFocus())
            return nullptr;
        if (cursor.stamp && canvas_->model().rows().findStamp(*cursor.stamp))
            return part<StampAccessible>(*cursor.stamp);
        if (cursor.line && canvas_->model().rows().indexOfLine(*cursor.line))
            return part<LineAccessible>(*cursor.line);
        return nullptr;
    }

    // Interfaces are created on request and live as long as the canvas.
    template <class Part>
    QAccessibleInterface* part(const Uuid& id) const {
        if (const auto found = parts_.find(id); found != parts_.end())
            return QAccessible::accessibleInterface(found->second);
        auto* made = new Part(canvas_, id);
        parts_.emplace(id, QAccessible::registerAccessibleInterface(made));
        return made;
    }

  private:
    void forget() {
        for (const auto& [id, registered] : parts_)
            QAccessible::deleteAccessibleInterface(registered);
    }

    TimelineCanvas* canvas_;
    mutable std::map<Uuid, QAccessible::Id> parts_;
};

CanvasAccessible* accessibleOf(TimelineCanvas* canvas) {
    return static_cast<CanvasAccessible*>(QAccessible::queryAccessibleInterface(canvas));
}

QAccessibleInterface* StampAccessible::parent() const {
    return isValid() ? accessibleOf(canvas_)->part<LineAccessible>(row().line->id) : nullptr;
}

QAccessibleInterface* LineAccessible::child(int index) const {
    if (index < 0 || index >= childCount())
        return nullptr;
    return accessibleOf(canvas_)->part<StampAccessible>(
        row().line->stamps[static_cast<std::size_t>(index)]->id);
}

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* canvas = qobject_cast<TimelineCanvas*>(object);
    return canvas ? new CanvasAccessible(canvas) : nullptr;
}

}  // namespace

void installTimelineAccessibility() {
    QAccessible::installFactory(makeAccessible);
}

void announceTimelineCursor(TimelineCanvas& canvas) {
    if (!QAccessible::isActive())
        return;
    if (QAccessibleInterface* part = accessibleOf(&canvas)->focusChild()) {
        QAccessibleEvent event(part, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace tembrix
