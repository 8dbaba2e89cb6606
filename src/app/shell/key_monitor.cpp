#include "app/shell/key_monitor.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
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

}  // namespace

KeyMonitor::KeyMonitor(HotKeyManager& hotkeys, Translate translate)
    : hotkeys_(hotkeys), translate_(std::move(translate)) {
    qApp->installEventFilter(this);
}

bool KeyMonitor::eventFilter(QObject* watched, QEvent* event) {
    // A press reaches the native window first and its widgets after that; the first is the one to
    // take.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType() ||
        QApplication::activePopupWidget())
        return false;
    const KeyPress press = translate_(static_cast<const QKeyEvent&>(*event));
    return !belongsToSheet(press) && hotkeys_.handleKeyDown(press);
}

}  // namespace tembrix
