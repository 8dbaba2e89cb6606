#include "app/widgets/accessible_controls.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QButtonGroup>
#include <QComboBox>
#include <QDialog>
#include <QKeySequence>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

#include "app/widgets/accessible.h"
#include "app/widgets/announcements.h"
#include "app/widgets/tabular_label.h"

namespace tembrix {

namespace {

// The text of a button without the marks of its mnemonic.
QString plainText(const QString& text) {
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && i + 1 < text.size())
            ++i;
        plain += text[i];
    }
    return plain;
}

}  // namespace

void forgetAccessible(QWidget* widget) {
    if (QAccessibleInterface* known = QAccessible::queryAccessibleInterface(widget))
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(known));
}

AccessibleControl::AccessibleControl(QWidget* widget) : QAccessibleWidget(widget) {}

QAccessible::Role AccessibleControl::role() const {
    if (const QVariant told = widget()->property(accessibleRoleProperty); told.isValid())
        return static_cast<QAccessible::Role>(told.toInt());
    if (const AccessibleValue* value = AccessibleValue::of(widget()))
        return value->role();
    if (qobject_cast<QDialog*>(widget()))
        return QAccessible::Dialog;
    if (widget()->windowType() == Qt::Window)
        return QAccessible::Window;
    return widget()->accessibleName().isEmpty() ? QAccessible::Client : QAccessible::Grouping;
}

QAccessible::State AccessibleControl::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.modal = widget()->isWindow() && widget()->isModal();
    if (const AccessibleValue* value = AccessibleValue::of(widget()))
        state.readOnly = !value->canBeSet();
    return state;
}

QString AccessibleControl::text(QAccessible::Text kind) const {
    // The title of a window may change.
    if (kind == QAccessible::Name && widget()->isWindow() && !widget()->windowTitle().isEmpty())
        return widget()->windowTitle();
    return QAccessibleWidget::text(kind);
}

void* AccessibleControl::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface && AccessibleValue::of(widget()))
        return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QList<QMenu*> AccessibleControl::menus() const {
    QList<QMenu*> open;
    for (auto* menu : widget()->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
        if (menu->isVisible())
            open << menu;
    return open;
}

int AccessibleControl::childCount() const {
    return QAccessibleWidget::childCount() + static_cast<int>(menus().size());
}

QAccessibleInterface* AccessibleControl::child(int index) const {
    const int widgets = QAccessibleWidget::childCount();
    if (index < widgets)
        return QAccessibleWidget::child(index);
    return QAccessible::queryAccessibleInterface(menus().value(index - widgets));
}

int AccessibleControl::indexOfChild(const QAccessibleInterface* child) const {
    const int index = QAccessibleWidget::indexOfChild(child);
    if (index >= 0 || !child)
        return index;
    const auto at = menus().indexOf(qobject_cast<QMenu*>(child->object()));
    return at < 0 ? -1 : QAccessibleWidget::childCount() + static_cast<int>(at);
}

QVariant AccessibleControl::currentValue() const {
    return AccessibleValue::of(widget())->reading().now;
}
void AccessibleControl::setCurrentValue(const QVariant& value) {
    AccessibleValue::of(widget())->set(value.toDouble());
}
QVariant AccessibleControl::maximumValue() const {
    return AccessibleValue::of(widget())->reading().most;
}
QVariant AccessibleControl::minimumValue() const {
    return AccessibleValue::of(widget())->reading().least;
}

QVariant AccessibleControl::minimumStepSize() const {
    return AccessibleValue::of(widget())->reading().step;
}

AccessibleButton::AccessibleButton(QAbstractButton* button) : AccessibleControl(button) {
    addControllingSignal(QStringLiteral("clicked()"));
    // The toolkit announces neither.
    QObject::connect(button, &QAbstractButton::toggled, button, [button] {
        if (!announcementsAreHeard())
            return;
        QAccessible::State changed;
        changed.checked = true;
        QAccessibleStateChangeEvent event(button, changed);
        announce(event);
    });
}

QAbstractButton* AccessibleButton::button() const {
    return static_cast<QAbstractButton*>(widget());
}

QMenu* AccessibleButton::menu() const {
    if (const auto* tool = qobject_cast<QToolButton*>(button()))
        return tool->menu();
    const auto* push = qobject_cast<QPushButton*>(button());
    return push ? push->menu() : nullptr;
}

QList<QMenu*> AccessibleButton::menus() const {
    if (QMenu* own = menu())
        return {own};
    return AccessibleControl::menus();
}

bool AccessibleButton::pressOpensMenu() const {
    const auto* tool = qobject_cast<QToolButton*>(button());
    return menu() && (!tool || tool->popupMode() == QToolButton::InstantPopup);
}

QAccessible::Role AccessibleButton::role() const {
    if (menu())
        return pressOpensMenu() ? QAccessible::ButtonMenu : QAccessible::ButtonDropDown;
    if (button()->property(accessibleCheckedProperty).isValid())
        return QAccessible::CheckBox;
    if (!button()->isCheckable())
        return QAccessible::Button;
    const QButtonGroup* group = button()->group();
    return button()->autoExclusive() || (group && group->exclusive()) ? QAccessible::RadioButton
                                                                      : QAccessible::CheckBox;
}

QAccessible::State AccessibleButton::state() const {
    QAccessible::State state = AccessibleControl::state();
    const QVariant checked = button()->property(accessibleCheckedProperty);
    state.checkable = button()->isCheckable() || checked.isValid();
    state.checked = checked.isValid() ? checked.toBool() : button()->isChecked();
    state.pressed = button()->isDown();
    state.hasPopup = menu() != nullptr;
    if (const auto* push = qobject_cast<QPushButton*>(button()))
        state.defaultButton = push->isDefault();
    if (const QVariant expanded = button()->property(accessibleExpandedProperty);
        expanded.isValid()) {
        state.expandable = true;
        state.expanded = expanded.toBool();
        state.collapsed = !expanded.toBool();
    }
    return state;
}

QString AccessibleButton::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Accelerator)
        return button()->property(accessibleKeyProperty).toString();
    const QString told = AccessibleControl::text(kind);
    if (kind == QAccessible::Description) {
        const QString figure = button()->property(accessibleFigureProperty).toString();
        // Without a description the toolkit takes the tooltip, which begins with the name.
        const bool repeats =
            button()->accessibleDescription().isEmpty() && told.startsWith(text(QAccessible::Name));
        if (repeats || told.isEmpty())
            return figure;
        return figure.isEmpty() ? told : told + QStringLiteral(", ") + figure;
    }
    if (kind != QAccessible::Name || !told.isEmpty())
        return told;
    const QString shown = plainText(button()->text());
    return shown.isEmpty() ? button()->toolTip() : shown;
}

QStringList AccessibleButton::actionNames() const {
    QStringList names;
    if (button()->isEnabled()) {
        names << pressAction();
        if (state().checkable)
            names << toggleAction();
        if (menu())
            names << showMenuAction();
    }
    return names + AccessibleControl::actionNames();
}

// The caller may wait for an answer, and a click may close the window, so the button is pressed
// after the answer was sent.
void AccessibleButton::doAction(const QString& name) {
    if (!button()->isEnabled())
        return;
    if (name == showMenuAction() || (name == pressAction() && pressOpensMenu())) {
        if (menu())
            QTimer::singleShot(0, menu(), [menu = menu(), button = QPointer(button())] {
                if (button)
                    menu->popup(button->mapToGlobal(button->rect().bottomLeft()));
            });
    } else if (name == pressAction() || name == toggleAction()) {
        QTimer::singleShot(0, button(), &QAbstractButton::click);
    } else {
        AccessibleControl::doAction(name);
    }
}

QStringList AccessibleButton::keyBindingsForAction(const QString& name) const {
    const QString key = text(QAccessible::Accelerator);
    return name == pressAction() && !key.isEmpty() ? QStringList{key} : QStringList();
}

AccessibleChoice::AccessibleChoice(QComboBox* box) : AccessibleControl(box) {
    tellRows(box->view());
}

QComboBox* AccessibleChoice::box() const {
    return static_cast<QComboBox*>(widget());
}

QAccessible::State AccessibleChoice::state() const {
    QAccessible::State state = AccessibleControl::state();
    state.hasPopup = state.expandable = true;
    state.expanded = box()->view()->isVisible();
    state.collapsed = !state.expanded;
    return state;
}

QString AccessibleChoice::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Value ||
        (kind == QAccessible::Description && box()->accessibleDescription().isEmpty()))
        return box()->currentText();
    return AccessibleControl::text(kind);
}

QAccessibleInterface* AccessibleChoice::child(int index) const {
    return index == 0 ? QAccessible::queryAccessibleInterface(box()->view()) : nullptr;
}

int AccessibleChoice::indexOfChild(const QAccessibleInterface* child) const {
    return child && child->object() == box()->view() ? 0 : -1;
}

QStringList AccessibleChoice::actionNames() const {
    QStringList names;
    if (box()->isEnabled())
        names << pressAction() << showMenuAction();
    return names + AccessibleControl::actionNames();
}

void AccessibleChoice::doAction(const QString& name) {
    if (!actionNames().contains(name))
        return;
    if (name == setFocusAction())
        return AccessibleControl::doAction(name);
    QTimer::singleShot(0, box(), &QComboBox::showPopup);
}

AccessibleReading::AccessibleReading(TabularLabel* label) : AccessibleControl(label) {}

QAccessible::Role AccessibleReading::role() const {
    const AccessibleValue* value = AccessibleValue::of(widget());
    return value ? value->role() : QAccessible::StaticText;
}

QString AccessibleReading::text(QAccessible::Text kind) const {
    const QString shown = static_cast<TabularLabel*>(widget())->text();
    if (kind == QAccessible::Value || kind == QAccessible::Description)
        return shown;
    const QString name = AccessibleControl::text(kind);
    // A text is read by its name alone.
    if (kind != QAccessible::Name || AccessibleValue::of(widget()))
        return name;
    return name.isEmpty() ? shown : name + ' ' + shown;
}

}  // namespace tembrix
