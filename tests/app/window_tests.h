#pragma once

#include <QString>
#include <QWidget>

namespace tembrix {

// The descendant with this object name, or null.
template <class Widget = QWidget>
Widget* child(const QWidget& parent, const char* name) {
    return parent.findChild<Widget*>(QString::fromLatin1(name));
}

// Activates the window. Returns false if that fails within the time limit. The request is repeated,
// because the display ignores it for a window that is not shown yet.
bool activate(QWidget& window);

// Saves a picture of the window in the folder TEMBRIX_PICTURES, if that is set.
void picture(QWidget& window, const QString& name);

// The descendants that a user can operate and that lack an accessible name.
QStringList unnamedControls(const QWidget& window);

}  // namespace tembrix
