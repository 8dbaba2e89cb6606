#pragma once

#include <QString>
#include <QWidget>

namespace tembrix {

// The descendant of this object name; fails the test by a null result.
template <class Widget = QWidget>
Widget* child(const QWidget& parent, const char* name) {
    return parent.findChild<Widget*>(QString::fromLatin1(name));
}

// Gives the window the keyboard; false if it does not get it in time. The request is repeated,
// because the display ignores one for a window that is not on screen yet.
bool activate(QWidget& window);

// Saves what the window shows to the folder that TEMBRIX_PICTURES names, if it names one.
void picture(QWidget& window, const QString& name);

// The descendants that a user can operate and that lack an accessible name.
QStringList unnamedControls(const QWidget& window);

}  // namespace tembrix
