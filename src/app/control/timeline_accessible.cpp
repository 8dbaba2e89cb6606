#include "app/control/timeline_accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <QTimer>
#include <map>

#include "base/shortened.h"
#include "base/uuid.h"

#include "app/control/timeline_canvas.h"
#include "app/widgets/announcements.h"
#include "app/widgets/qt_text.h"
#include "core/control/timeline_cursor.h"
#include "core/control/timeline_editing_model.h"
#include "core/control/timeline_rows.h"
#include "core/records/timeline_records.h"

namespace tembrix {

namespace {

// A part of the canvas without a widget of its own: a line or one of its stamps, identified by its
// id. It becomes invalid when the line or the stamp is removed.
class TimelinePart : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    TimelinePart(TimelineCanvas* canvas, const Uuid& id) : canvas_(canvas), id_(id) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        if (!isValid() || !canvas_->isEnabled())
            return {};
        return QStringList{pressAction()} + furtherActions() + QStringList{setFocusAction()};
    }
    QString localizedActionName(const QString& name) const override { return name; }
    // Done after the caller has its answer.
    void doAction(const QString& name) override {
        if (actionNames().contains(name))
            QTimer::singleShot(0, canvas_, [canvas = canvas_.data(), id = id_, name] {
                auto* part = static_cast<TimelinePart*>(partOf(canvas, id));
                if (part && part->isValid())
                    part->act(name);
            });
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

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
        state.selected = isSelected();
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
    virtual bool isSelected() const = 0;
    virtual QStringList furtherActions() const = 0;
    virtual void act(const QString& action) = 0;
    static QAccessibleInterface* partOf(TimelineCanvas* canvas, const Uuid& id);
    void takeFocus(const TimelineCursor& place) {
        canvas_->model().goTo(place);
        canvas_->setFocus(Qt::OtherFocusReason);
    }
    TimelineEditingModel& model() const { return canvas_->model(); }
    const TimelineRow& row() const { return canvas_->model().rows()[hit()->row]; }

    QPointer<TimelineCanvas> canvas_;
    Uuid id_;
};

// Without moving the playhead.
QString selectAction() {
    return QStringLiteral("Select");
}

// What the keys with Alt and Ctrl do to the stamp under the cursor.
struct StampChange {
    const char* name;
    void (*apply)(TimelineEditingModel& model);
};
constexpr StampChange stampChanges[] = {
    {"StartEarlier", [](auto& model) { model.nudgeCursor(ResizeEdge::left, -1); }},
    {"StartLater", [](auto& model) { model.nudgeCursor(ResizeEdge::left, +1); }},
    {"EndEarlier", [](auto& model) { model.nudgeCursor(ResizeEdge::right, -1); }},
    {"EndLater", [](auto& model) { model.nudgeCursor(ResizeEdge::right, +1); }},
    {"MoveToLineAbove", [](auto& model) { model.moveCursorStamp(-1); }},
    {"MoveToLineBelow", [](auto& model) { model.moveCursorStamp(+1); }},
};

class StampAccessible final : public TimelinePart {
  public:
    using TimelinePart::TimelinePart;

    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QString text(QAccessible::Text kind) const override {
        if (!isValid())
            return {};
        if (kind == QAccessible::Description && canvas_->descriptions().stamp)
            return canvas_->descriptions().stamp(stamp());
        return kind == QAccessible::Name ? qtext(stampAccessibleText(stamp())) : QString();
    }
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* parent() const override;

  protected:
    std::optional<TimelineHit> hit() const override {
        return canvas_->model().rows().findStamp(id_);
    }
    bool isCursor() const override { return canvas_ && model().cursor->stamp == id_; }
    bool isSelected() const override { return canvas_ && canvas_->selectedStamp() == id_; }
    QStringList furtherActions() const override {
        QStringList names{selectAction(), showMenuAction()};
        for (const auto& change : stampChanges)
            names << QLatin1String(change.name);
        return names;
    }
    void act(const QString& action) override {
        for (const auto& change : stampChanges)
            if (action == QLatin1String(change.name)) {
                model().goTo({row().line->id, id_});
                return change.apply(model());
            }
        if (action == pressAction())
            model().clickStamp(row().line->id, id_);
        else if (action == selectAction())
            canvas_->selectStamp(id_);
        else if (action == showMenuAction())
            canvas_->openStampMenu(*hit());
        else
            takeFocus({row().line->id, id_});
    }

  private:
    const TimelineStamp& stamp() const { return *row().line->stamps[*hit()->stamp]; }
};

class LineAccessible final : public TimelinePart {
  public:
    using TimelinePart::TimelinePart;

    QAccessible::Role role() const override { return QAccessible::List; }
    QString text(QAccessible::Text kind) const override {
        if (!isValid())
            return {};
        if (kind == QAccessible::Description && canvas_->descriptions().line)
            return canvas_->descriptions().line(*row().line);
        return kind == QAccessible::Name ? qtext(shortened(row().line->name)) : QString();
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
        return canvas_ && model().cursor->line == id_ && !model().cursor->stamp;
    }
    bool isSelected() const override { return canvas_ && canvas_->selectedLine() == id_; }
    QStringList furtherActions() const override { return {}; }
    void act(const QString& action) override {
        if (action == pressAction())
            model().selectLine(id_);
        else
            takeFocus({id_, {}});
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
    QAccessibleInterface* known(const Uuid& id) const {
        const auto found = parts_.find(id);
        return found == parts_.end() ? nullptr : QAccessible::accessibleInterface(found->second);
    }
    // The part of this id, if there is one.
    QAccessibleInterface* partOf(const Uuid& id) const {
        if (canvas_->model().rows().indexOfLine(id))
            return part<LineAccessible>(id);
        return canvas_->model().rows().findStamp(id) ? part<StampAccessible>(id) : nullptr;
    }
    template <class Part>
    QAccessibleInterface* part(const Uuid& id) const {
        if (QAccessibleInterface* made = known(id))
            return made;
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

QAccessibleInterface* TimelinePart::partOf(TimelineCanvas* canvas, const Uuid& id) {
    return accessibleOf(canvas)->partOf(id);
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
    if (!announcementsAreHeard())
        return;
    if (QAccessibleInterface* part = accessibleOf(&canvas)->focusChild()) {
        QAccessibleEvent event(part, QAccessible::Focus);
        announce(event);
    }
}

void announceTimelineSelection(TimelineCanvas& canvas, const std::optional<Uuid>& before,
                               const std::optional<Uuid>& now) {
    if (!announcementsAreHeard())
        return;
    const auto tell = [&](const std::optional<Uuid>& id, QAccessible::Event change) {
        if (QAccessibleInterface* part = id ? accessibleOf(&canvas)->partOf(*id) : nullptr) {
            QAccessibleEvent event(part, change);
            announce(event);
        }
    };
    tell(before, QAccessible::SelectionRemove);
    tell(now, QAccessible::SelectionAdd);
}

void announceTimelineRow(TimelineCanvas& canvas, std::size_t row) {
    if (!announcementsAreHeard())
        return;
    const Uuid line = canvas.model().rows()[row].line->id;
    QAccessibleInterface* part = accessibleOf(&canvas)->partOf(line);
    QAccessibleEvent described(part, QAccessible::DescriptionChanged);
    announce(described);
    // A new stamp is the last of its line.
    const auto& stamps = canvas.model().rows()[row].line->stamps;
    if (!stamps.empty() && !accessibleOf(&canvas)->known(stamps.back()->id)) {
        QAccessibleEvent created(part->child(part->childCount() - 1), QAccessible::ObjectCreated);
        announce(created);
    }
}

}  // namespace tembrix
