#pragma once

class QWidget;

namespace tembrix {

// Lets the content of a window have the focus while none of its controls does. It does not take the
// focus when it or one of its controls is clicked.
void restFocusOn(QWidget* content);

// The content around the control on which the focus rests, or null.
QWidget* focusRest(const QWidget* control);

}  // namespace tembrix
