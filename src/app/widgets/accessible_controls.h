#pragma once

#include <QAccessibleWidget>
#include <QList>

class QAbstractButton;
class QComboBox;
class QMenu;

namespace tembrix {

class TabularLabel;

// Where the functions of accessible.h keep what they are told.
constexpr const char* accessibleRoleProperty = "accessibleRole";
constexpr const char* accessibleKeyProperty = "accessibleKey";
constexpr const char* accessibleCheckedProperty = "accessibleChecked";
constexpr const char* accessibleExpandedProperty = "accessibleExpanded";
constexpr const char* accessibleFigureProperty = "accessibleFigure";

// Makes the toolkit ask again who represents the widget. It may have asked before all was told.
void forgetAccessible(QWidget* widget);

// A widget as screen readers see it: a window, a dialog, a named group or something with a value.
class AccessibleControl : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit AccessibleControl(QWidget* widget);

    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    // The menus that are open belong to the tree.
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override;

  protected:
    virtual QList<QMenu*> menus() const;
};

// A button. Its actions do what a click does.
class AccessibleButton final : public AccessibleControl {
  public:
    explicit AccessibleButton(QAbstractButton* button);

    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString& name) const override;

  protected:
    QList<QMenu*> menus() const override;

  private:
    QAbstractButton* button() const;
    QMenu* menu() const;  // null for a button without
    bool pressOpensMenu() const;
};

// A box that offers a list. Its name is what it is for, its value what is chosen.
class AccessibleChoice final : public AccessibleControl {
  public:
    explicit AccessibleChoice(QComboBox* box);

    QAccessible::Role role() const override { return QAccessible::ComboBox; }
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

  private:
    QComboBox* box() const;
};

// A figure that is painted by itself: a time or a zoom.
class AccessibleReading final : public AccessibleControl {
  public:
    explicit AccessibleReading(TabularLabel* label);

    QAccessible::Role role() const override;
    QString text(QAccessible::Text kind) const override;
};

}  // namespace tembrix
