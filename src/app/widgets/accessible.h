#pragma once

#include <QAccessible>
#include <QObject>
#include <QString>
#include <functional>

class QAbstractItemView;
class QWidget;

namespace tembrix {

// What screen readers and other assistive programs are told about the windows, beyond what the
// toolkit tells by itself: windows, named groups, buttons that do what a click does, values, and
// lists whose rows can be pressed.

// Called once, before the first window is shown.
void installAccessibility();

// The role of a widget that paints itself, such as a picture.
void tellRole(QWidget* widget, QAccessible::Role role);

// The key that presses the button, as the user reads it. Empty if there is none.
void tellKey(QWidget* button, const QString& caption);

// The state of a button that shows it by its icon.
void tellChecked(QWidget* button, bool checked);
void tellExpanded(QWidget* button, bool expanded);

// A text that changes often, such as a running time. It is read after the description of the
// button, and its changes are not announced.
void tellFigure(QWidget* button, const QString& figure);

// The rows of the list can be pressed, which does what a click does.
struct AccessibleRows {
    bool pressed = true;    // false: the rows only tell something
    bool menu = false;      // each row has a context menu
    int pressedColumn = 0;  // a further column with an action of its own; 0: none
};
void tellRows(QAbstractItemView* list, const AccessibleRows& rows = {});

// The value of a widget that paints it. A child of the widget, made before the widget is shown.
class AccessibleValue final : public QObject {
    Q_OBJECT
  public:
    struct Reading {
        double now = 0;
        double least = 0;
        double most = 0;
        double step = 1;
    };

    // Without `set` the value can only be read.
    AccessibleValue(QWidget* widget, QAccessible::Role role, std::function<Reading()> read,
                    std::function<void(double)> set = {});

    static AccessibleValue* of(const QWidget* widget);

    QAccessible::Role role() const { return role_; }
    Reading reading() const { return read_(); }
    bool canBeSet() const { return set_ != nullptr; }
    void set(double value);

    // Tells that the value has changed, unless that was less than `step` since it was last told.
    void changed(double step = 0);

  private:
    QAccessible::Role role_;
    std::function<Reading()> read_;
    std::function<void(double)> set_;
    double told_ = 0;
};

}  // namespace tembrix
