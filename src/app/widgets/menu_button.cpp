#include "app/widgets/menu_button.h"

#include <QKeyEvent>

namespace tembrix {

MenuButton::MenuButton(QWidget* parent) : QToolButton(parent) {}

void MenuButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Down && menu())
        showMenu();
    else
        QToolButton::keyPressEvent(event);
}

}  // namespace tembrix
