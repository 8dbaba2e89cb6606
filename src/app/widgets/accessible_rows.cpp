#include "app/widgets/accessible_rows.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QListView>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QTimer>
#include <QTreeView>
#include <map>
#include <utility>

#include "app/widgets/accessible.h"
#include "app/widgets/accessible_controls.h"
#include "app/widgets/announcements.h"

namespace tembrix {

namespace {

constexpr const char* rowsProperty = "accessibleRows";

// A child of the list, which keeps what it was told.
class ToldRows final : public QObject {
  public:
    ToldRows(QAbstractItemView* list, const AccessibleRows& rows) : QObject(list), told(rows) {
        setObjectName(rowsProperty);
    }
    const AccessibleRows told;
};

const AccessibleRows* toldRows(const QAbstractItemView* list) {
    const auto* kept = static_cast<const ToldRows*>(
        list->findChild<QObject*>(rowsProperty, Qt::FindDirectChildrenOnly));
    return kept ? &kept->told : nullptr;
}

bool isHidden(const QAbstractItemView* list, int row) {
    if (const auto* tree = qobject_cast<const QTreeView*>(list))
        return tree->isRowHidden(row, {});
    const auto* rows = qobject_cast<const QListView*>(list);
    return rows && rows->isRowHidden(row);
}

// The box that opens the list; null for any other list.
QComboBox* boxOf(const QAbstractItemView* list) {
    const QWidget* frame = list->parentWidget();
    return frame ? qobject_cast<QComboBox*>(frame->parentWidget()) : nullptr;
}

// A cell of the list.
class Cell final : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    // Without an index it is empty and invisible.
    Cell(QAbstractItemView* list, const QModelIndex& index)
        : list_(list), index_(index), empty_(!index.isValid()) {}

    bool isValid() const override { return list_ && (empty_ || index_.isValid()); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override {
        return isValid() ? list_->window()->windowHandle() : nullptr;
    }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(list_);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        if (!isValid() || empty_)
            return {};
        const QRect area = list_->visualRect(index_);
        return {list_->viewport()->mapToGlobal(area.topLeft()), area.size()};
    }

    QAccessible::Role role() const override {
        if (isValid() && (empty_ || index_.column() > 0))
            return !empty_ && pressed() ? QAccessible::Button : QAccessible::StaticText;
        return QAccessible::ListItem;
    }
    QString text(QAccessible::Text kind) const override {
        if (!isValid() || empty_)
            return {};
        if (kind == QAccessible::Description)
            return index_.data(Qt::AccessibleDescriptionRole).toString();
        const QModelIndex second = index_.sibling(index_.row(), 1);
        if (kind == QAccessible::Accelerator)
            return index_.column() == 0 && toldRows(list_)->pressedColumn == 0
                       ? second.data().toString()
                       : QString();
        if (kind != QAccessible::Name)
            return {};
        const QString name = nameOf(index_);
        return index_.column() > 0 && !name.isEmpty() ? nameOf(first()) + ": " + name : name;
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid() || !list_->isVisible() || text(QAccessible::Name).isEmpty()) {
            state.invalid = !isValid();
            state.invisible = true;
            return state;
        }
        state.offscreen = !list_->viewport()->rect().intersects(list_->visualRect(index_));
        state.disabled = !list_->isEnabled() || !index_.flags().testFlag(Qt::ItemIsEnabled);
        if (index_.column() > 0)
            return state;
        state.focusable = state.selectable = true;
        state.selected = list_->selectionModel()->isSelected(index_);
        state.active = list_->currentIndex().row() == index_.row();
        state.focused = state.active && list_->hasFocus();
        const QVariant check = index_.data(Qt::CheckStateRole);
        state.checkable = check.isValid();
        state.checked = check.toInt() == Qt::Checked;
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override {
        QStringList names;
        const auto now = state();
        if (now.disabled || now.invisible)
            return names;
        if (pressed())
            names << pressAction();
        if (index_.column() > 0)
            return names;
        if (now.checkable)
            names << toggleAction();
        if (toldRows(list_)->menu)
            names << showMenuAction();
        return names << setFocusAction();
    }
    // Done after the caller has its answer, because a press may close the window.
    void doAction(const QString& name) override {
        if (!actionNames().contains(name))
            return;
        QTimer::singleShot(0, list_, [name, list = list_.data(), index = index_] {
            if (index.isValid())
                act(list, index, name);
        });
    }
    QStringList keyBindingsForAction(const QString& name) const override {
        const QString key = text(QAccessible::Accelerator);
        return name == pressAction() && !key.isEmpty() ? QStringList{key} : QStringList();
    }

  private:
    static void act(QAbstractItemView* list, const QPersistentModelIndex& index,
                    const QString& name) {
        if (!boxOf(list))
            list->setCurrentIndex(index.sibling(index.row(), 0));
        if (name == setFocusAction()) {
            list->setFocus(Qt::OtherFocusReason);
        } else if (name == showMenuAction()) {
            const QPoint at = list->visualRect(index).center();
            QContextMenuEvent event(QContextMenuEvent::Keyboard, at,
                                    list->viewport()->mapToGlobal(at));
            QApplication::sendEvent(list, &event);
        } else if (QComboBox* box = boxOf(list)) {
            box->hidePopup();
            box->setCurrentIndex(index.row());
            Q_EMIT box->activated(index.row());
        } else {
            Q_EMIT list->clicked(index);
        }
    }
    QModelIndex first() const { return index_.sibling(index_.row(), 0); }
    static QString nameOf(const QModelIndex& index) {
        const QString told = index.data(Qt::AccessibleTextRole).toString();
        return told.isEmpty() ? index.data().toString().trimmed() : told;
    }
    bool pressed() const {
        const AccessibleRows& told = *toldRows(list_);
        return told.pressed && (index_.column() == 0 || index_.column() == told.pressedColumn);
    }

    QPointer<QAbstractItemView> list_;
    QPersistentModelIndex index_;
    bool empty_;
};

// Announces the current row when the list gets the focus; the toolkit announces the list alone.
class FocusOfRows final : public QObject {
  public:
    bool eventFilter(QObject* list, QEvent* event) override {
        if (event->type() == QEvent::FocusIn && announcementsAreHeard())
            QTimer::singleShot(0, list, [list] {
                QAccessibleInterface* rows = QAccessible::queryAccessibleInterface(list);
                if (QAccessibleInterface* current = rows ? rows->focusChild() : nullptr) {
                    QAccessibleEvent focus(current, QAccessible::Focus);
                    announce(focus);
                }
            });
        return false;
    }
};

// The numbers of the children are those by which the toolkit announces rows: a tree has a row of
// headers before the others, also if it shows none, and rows that are hidden have no number.
class Rows final : public QAccessibleWidget {
  public:
    explicit Rows(QAbstractItemView* list)
        : QAccessibleWidget(list, QAccessible::List), list_(list) {
        list->installEventFilter(&context_);
        const QAbstractItemModel* model = list->model();
        if (!model)
            return;
        const auto forget = [this] { this->forget(); };
        QObject::connect(model, &QAbstractItemModel::modelReset, &context_, forget);
        QObject::connect(model, &QAbstractItemModel::layoutChanged, &context_, forget);
        QObject::connect(model, &QAbstractItemModel::rowsInserted, &context_, forget);
        QObject::connect(model, &QAbstractItemModel::rowsRemoved, &context_, forget);
        QObject::connect(model, &QAbstractItemModel::rowsMoved, &context_, forget);
    }
    ~Rows() override { forget(); }

    int childCount() const override {
        if (!list_->model())
            return 0;
        int rows = 0;
        for (int row = 0; row < list_->model()->rowCount(); ++row)
            rows += isHidden(list_, row) ? 0 : 1;
        return (rows + headers()) * columns();
    }
    QAccessibleInterface* child(int number) const override {
        if (number < 0 || !list_->model())
            return nullptr;
        int rows = number / columns() - headers();
        if (rows < 0)
            return header(number);
        for (int row = 0; row < list_->model()->rowCount(); ++row)
            if (!isHidden(list_, row) && rows-- == 0)
                return cell(list_->model()->index(row, number % columns()));
        return nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        for (int i = 0, count = childCount(); i < count; ++i)
            if (this->child(i) == child)
                return i;
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        const QModelIndex index = list_->indexAt(list_->viewport()->mapFromGlobal(QPoint(x, y)));
        return index.isValid() ? cell(index) : nullptr;
    }
    QAccessibleInterface* focusChild() const override {
        const QModelIndex current = list_->currentIndex();
        return list_->hasFocus() && current.isValid() ? cell(current.sibling(current.row(), 0))
                                                      : nullptr;
    }

  private:
    QAccessibleInterface* header(int number) const { return remember({-1, number}, {}); }
    QAccessibleInterface* cell(const QModelIndex& index) const {
        return remember({index.row(), index.column()}, index);
    }
    QAccessibleInterface* remember(std::pair<int, int> place, const QModelIndex& index) const {
        if (const auto found = cells_.find(place); found != cells_.end())
            return QAccessible::accessibleInterface(found->second);
        auto* made = new Cell(list_, index);
        cells_.emplace(place, QAccessible::registerAccessibleInterface(made));
        return made;
    }
    void forget() {
        for (const auto& [place, id] : std::exchange(cells_, {}))
            QAccessible::deleteAccessibleInterface(id);
    }
    int columns() const { return std::max(list_->model()->columnCount(), 1); }
    int headers() const { return qobject_cast<QTreeView*>(list_) ? 1 : 0; }

    QAbstractItemView* list_;
    FocusOfRows context_;  // also ends the connections
    mutable std::map<std::pair<int, int>, QAccessible::Id> cells_;
};

}  // namespace

void tellRows(QAbstractItemView* list, const AccessibleRows& rows) {
    if (toldRows(list))
        return;
    new ToldRows(list, rows);
    forgetAccessible(list);
}

QAccessibleInterface* makeAccessibleRows(QAbstractItemView* list) {
    return toldRows(list) ? new Rows(list) : nullptr;
}

}  // namespace tembrix
