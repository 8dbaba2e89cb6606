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

// Makers of standard controls. Each control carries its text key as object name and the text that
// the user reads as accessible name, by which the tests and screen readers find it.

enum class ButtonLook { quiet, accented, destructive, plain };
enum class LabelLook { body, secondary, caption, title, warning };

QPushButton* makeButton(const Texts& texts, std::string_view key,
                        ButtonLook look = ButtonLook::quiet, QWidget* parent = nullptr);

// A button that shows an icon alone, by its freedesktop name; the text is its help and its name.
QToolButton* makeIconButton(const Texts& texts, std::string_view key, const QString& icon,
                            QWidget* parent = nullptr);

QCheckBox* makeCheckBox(const Texts& texts, std::string_view key, QWidget* parent = nullptr);

// A label wraps its text where it is too long.
QLabel* makeLabel(const Texts& texts, std::string_view key, LabelLook look = LabelLook::body,
                  QWidget* parent = nullptr);

void setLook(QPushButton* button, ButtonLook look);
void setLook(QLabel* label, LabelLook look);

// Names any other control.
void nameControl(QWidget* control, const Texts& texts, std::string_view key);
// Names a control that stands for a thing of the user's: what it is called is the user's own text.
void nameControl(QWidget* control, std::string_view objectName, const QString& accessibleName);

// The control beneath a small caption with the key's text; names the control by it.
QWidget* labeled(const Texts& texts, std::string_view key, QWidget* control);

// A thin line between groups of a bar or a form.
QFrame* makeSeparator(Qt::Orientation orientation, QWidget* parent = nullptr);

}  // namespace tembrix
