#pragma once

#include <QString>
#include <Qt>
#include <string_view>

#include "ports/texts.h"

class QCheckBox;
class QFrame;
class QLabel;
class QPushButton;
class QToolButton;
class QWidget;

namespace tembrix {

// Creates standard controls. The text key becomes the object name, which tests use, and the text
// the accessible name, which screen readers use. Texts follow the language.

enum class ButtonLook { quiet, accented, destructive, plain };
enum class LabelLook { body, secondary, caption, title, warning };

QPushButton* makeButton(const Texts& texts, std::string_view key,
                        ButtonLook look = ButtonLook::quiet, QWidget* parent = nullptr);

// A button that shows only an icon, given by its freedesktop name. The text is its tooltip and its
// accessible name.
QToolButton* makeIconButton(const Texts& texts, std::string_view key, const QString& icon,
                            QWidget* parent = nullptr);

// Makes such a button of a tool button of another class.
void showIcon(QToolButton* button, const Texts& texts, std::string_view key, const QString& icon);

QCheckBox* makeCheckBox(const Texts& texts, std::string_view key, QWidget* parent = nullptr);

// A label wraps its text if it is too long.
QLabel* makeLabel(const Texts& texts, std::string_view key, LabelLook look = LabelLook::body,
                  QWidget* parent = nullptr);

void setLook(QPushButton* button, ButtonLook look);
void setLook(QLabel* label, LabelLook look);

// Enables or disables a control. The focus of a control that is disabled does not jump to the next
// one, where a further press would do something else, but rests on the content of the window.
void setUsable(QWidget* control, bool usable);
// Before a control is hidden.
void leaveFocus(QWidget* control);

// Names any other control.
void nameControl(QWidget* control, const Texts& texts, std::string_view key);
// Names a control that shows an item of the user's data; the accessible name is the user's text.
void nameControl(QWidget* control, std::string_view objectName, const QString& accessibleName);

// Puts a small caption with the key's text above a control and names the control after it.
QWidget* labeled(const Texts& texts, std::string_view key, QWidget* control);

// A thin line between groups of a toolbar or a form.
QFrame* makeSeparator(Qt::Orientation orientation, QWidget* parent = nullptr);

}  // namespace tembrix
