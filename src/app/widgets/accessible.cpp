#include "app/widgets/accessible.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QDialog>
#include <QMenu>
#include <cmath>
#include <utility>

#include "app/widgets/accessible_controls.h"
#include "app/widgets/accessible_rows.h"
#include "app/widgets/announcements.h"
#include "app/widgets/tabular_label.h"

namespace tembrix {

namespace {

// An entry that is pressed through the tree leaves the menu open otherwise.
void closeWhenChosen(QMenu* menu) {
    QObject::connect(
        menu, &QMenu::triggered, menu,
        [menu] {
            if (menu->isVisible())
                menu->close();
        },
        Qt::QueuedConnection);
}

QAccessibleInterface* makeAccessible(const QString& className, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget)
        return nullptr;
    if (auto* menu = qobject_cast<QMenu*>(widget)) {
        if (className == QLatin1String(menu->metaObject()->className()))
            closeWhenChosen(menu);
        return nullptr;
    }
    if (auto* list = qobject_cast<QAbstractItemView*>(widget))
        return makeAccessibleRows(list);
    if (auto* button = qobject_cast<QAbstractButton*>(widget))
        return new AccessibleButton(button);
    if (auto* box = qobject_cast<QComboBox*>(widget); box && !box->accessibleName().isEmpty())
        return new AccessibleChoice(box);
    if (auto* label = qobject_cast<TabularLabel*>(widget))
        return new AccessibleReading(label);
    // The toolkit asks for the classes of an object from the most derived on. It knows those
    // between ours and these two.
    const bool plain = className == QLatin1String("QWidget") ||
                       className == QLatin1String("QDialog") ||
                       widget->property(accessibleRoleProperty).isValid();
    return plain ? new AccessibleControl(widget) : nullptr;
}

// Announces the change of a state that is told as a property of the widget.
void tell(QWidget* widget, const char* property, bool value, QAccessible::State changed) {
    const QVariant before = widget->property(property);
    widget->setProperty(property, value);
    if (!announcementsAreHeard() || !before.isValid() || before.toBool() == value)
        return;
    QAccessibleStateChangeEvent event(widget, changed);
    announce(event);
}

}  // namespace

void installAccessibility() {
    QAccessible::installFactory(makeAccessible);
}

void tellRole(QWidget* widget, QAccessible::Role role) {
    widget->setProperty(accessibleRoleProperty, static_cast<int>(role));
    forgetAccessible(widget);
}

void tellKey(QWidget* button, const QString& caption) {
    button->setProperty(accessibleKeyProperty, caption);
}

void tellChecked(QWidget* button, bool checked) {
    QAccessible::State changed;
    changed.checked = true;
    tell(button, accessibleCheckedProperty, checked, changed);
}

void tellExpanded(QWidget* button, bool expanded) {
    QAccessible::State changed;
    changed.expanded = changed.collapsed = true;
    tell(button, accessibleExpandedProperty, expanded, changed);
}

void tellFigure(QWidget* button, const QString& figure) {
    button->setProperty(accessibleFigureProperty, figure);
}

AccessibleValue::AccessibleValue(QWidget* widget, QAccessible::Role role,
                                 std::function<Reading()> read, std::function<void(double)> set)
    : QObject(widget), role_(role), read_(std::move(read)), set_(std::move(set)) {}

AccessibleValue* AccessibleValue::of(const QWidget* widget) {
    return widget->findChild<AccessibleValue*>(QString(), Qt::FindDirectChildrenOnly);
}

void AccessibleValue::set(double value) {
    if (set_)
        set_(value);
}

void AccessibleValue::changed(double step) {
    if (!announcementsAreHeard())
        return;
    const double now = reading().now;
    if (now == told_ || std::abs(now - told_) < step)
        return;
    told_ = now;
    QAccessibleValueChangeEvent event(parent(), now);
    announce(event);
}

}  // namespace tembrix
