#include "app/shell/key_monitor.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QToolButton>
#include <QWindow>
#include <utility>

namespace tembrix {

namespace {

// On a sheet the blank and the shifted arrows belong to the control that has the focus: they tick a
// box or extend a selection. The player takes them everywhere else.
bool belongsToSheet(const KeyPress& press) {
    const bool arrow = press.code == key::left || press.code == key::right;
    const bool transport = press.code == key::space || (press.modifiers.shift && arrow);
    return transport && qobject_cast<QDialog*>(QApplication::activeWindow());
}

// The blank is the player's in the windows of a project, so Return presses the button that has the
// focus there. Sheets have their own default button, and controls that take Return themselves come
// first.
bool pressFocusedButton(const QKeyEvent& event) {
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter)
        return false;
    auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget());
    if (!button || !button->isEnabled() || qobject_cast<QDialog*>(button->window()))
        return false;
    auto* tool = qobject_cast<QToolButton*>(button);
    if (tool && tool->menu())
        tool->menu()->popup(tool->mapToGlobal(tool->rect().bottomLeft()));
    else
        button->click();
    return true;
}

}  // namespace

KeyMonitor::KeyMonitor(HotKeyManager& hotkeys, Translate translate)
    : hotkeys_(hotkeys), translate_(std::move(translate)) {
    qApp->installEventFilter(this);
}

bool KeyMonitor::eventFilter(QObject* watched, QEvent* event) {
    // A press reaches the native window first and its widgets after that; the first is the one to
    // take.
    const bool asksForShortcuts = event->type() == QEvent::ShortcutOverride;
    if ((!asksForShortcuts && event->type() != QEvent::KeyPress) || !watched->isWindowType() ||
        QApplication::activePopupWidget())
        return false;
    const auto& native = static_cast<const QKeyEvent&>(*event);
    const KeyPress press = translate_(native);
    if (asksForShortcuts) {
        // Shortcuts are looked up before the press itself comes: a hot key goes before them too.
        if (belongsToSheet(press) || !hotkeys_.takes(press))
            return false;
        event->accept();
        return true;
    }
    if (!belongsToSheet(press) && hotkeys_.handleKeyDown(press))
        return true;
    return pressFocusedButton(native);
}

}  // namespace tembrix
