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

// In a sheet the space key and Shift with the arrow keys check a box or extend a selection.
// Everywhere else they control the player, also while labels are chosen, because the user may want
// to watch the moment again. There, Ctrl+Space checks a label.
bool belongsToSheet(const KeyPress& press, bool choosesLabels) {
    const bool space = press.code == key::space && !(choosesLabels && !press.modifiers.command);
    const bool arrow = press.code == key::left || press.code == key::right;
    const bool seek = press.modifiers.shift && arrow && !choosesLabels;
    return (space || seek) && qobject_cast<QDialog*>(QApplication::activeWindow());
}

// The space key controls the player in project windows, so Return presses the focused button there.
// Sheets have their own default button. Auto-repeat is ignored.
bool pressFocusedButton(const QKeyEvent& event) {
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter)
        return false;
    auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget());
    if (!button || !button->isEnabled() || qobject_cast<QDialog*>(button->window()))
        return false;
    if (event.isAutoRepeat())
        return true;
    auto* tool = qobject_cast<QToolButton*>(button);
    if (tool && tool->menu())
        tool->menu()->popup(tool->mapToGlobal(tool->rect().bottomLeft()));
    else
        button->click();
    return true;
}

}  // namespace

KeyMonitor::KeyMonitor(std::function<HotKeyManager*()> hotkeys, Translate translate)
    : hotkeys_(std::move(hotkeys)), translate_(std::move(translate)) {
    qApp->installEventFilter(this);
}

bool KeyMonitor::eventFilter(QObject* watched, QEvent* event) {
    // The native window receives a key press before its widgets do; only that first event is
    // handled.
    const bool asksForShortcuts = event->type() == QEvent::ShortcutOverride;
    if ((!asksForShortcuts && event->type() != QEvent::KeyPress) || !watched->isWindowType() ||
        QApplication::activePopupWidget())
        return false;
    const auto& native = static_cast<const QKeyEvent&>(*event);
    const KeyPress press = translate_(native);
    HotKeyManager* hotkeys = hotkeys_();
    const bool sheets = belongsToSheet(press, hotkeys && *hotkeys->isLabelHotkeyMode);
    if (asksForShortcuts) {
        // Qt looks up shortcuts before it delivers the press. Hot keys have priority over
        // shortcuts.
        if (sheets || !hotkeys || !hotkeys->takes(press))
            return false;
        event->accept();
        return true;
    }
    if (!sheets && hotkeys && hotkeys->handleKeyDown(press))
        return true;
    return pressFocusedButton(native);
}

}  // namespace tembrix
