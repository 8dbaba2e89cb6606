#include "app/shell/key_monitor.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QToolButton>
#include <QWindow>
#include <utility>

#include "app/commands/command_menu_bar.h"
#include "app/widgets/key_capture_view.h"
#include "app/widgets/sheet.h"

namespace tembrix {

namespace {

bool isTextField(const QWidget* widget) {
    if (const auto* line = qobject_cast<const QLineEdit*>(widget))
        return !line->isReadOnly();
    const auto* box = qobject_cast<const QComboBox*>(widget);
    return qobject_cast<const QTextEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget) ||
           qobject_cast<const QAbstractSpinBox*>(widget) || (box && box->isEditable());
}

KeySituation situation(bool repeated) {
    KeySituation now;
    now.repeated = repeated;
    now.menuOpen = QApplication::activePopupWidget() != nullptr;
    now.textField = isTextField(QApplication::focusWidget());
    const auto* recorder = qobject_cast<const KeyCaptureView*>(QApplication::focusWidget());
    now.records = recorder && recorder->isCapturing();
    for (const QWidget* widget = QApplication::activeWindow(); widget;
         widget = widget->parentWidget()) {
        const QWidget* window = widget->window();
        if (qobject_cast<const QDialog*>(window) && now.sheet != KeySituation::Sheet::other) {
            const auto* sheet = qobject_cast<const Sheet*>(window);
            now.sheet = sheet && sheet->keepsHotkeys() ? KeySituation::Sheet::message
                                                       : KeySituation::Sheet::other;
        }
        if (const CommandMenuBar* menus = CommandMenuBar::of(window)) {
            now.window = menus->scope();
            break;
        }
        widget = window;
    }
    return now;
}

bool isReturn(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

// The space key controls the player in project windows, so Return presses the focused button there.
// Sheets have their own default button.
bool pressFocusedButton(const QKeyEvent& event) {
    if (!isReturn(event))
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

KeyMonitor::KeyMonitor(KeyRouter& router, Translate translate)
    : router_(router), translate_(std::move(translate)) {
    qApp->installEventFilter(this);
}

// A Return that is held down answers neither the sheet that it opened nor what has the focus then.
// The toolkit does not notice each repetition: under X11 it is a release and a press at one time,
// and other events can come between them when windows open and close.
bool KeyMonitor::isHeldReturn(const QKeyEvent& press) const {
    const QWidget* focus = QApplication::focusWidget();
    const bool repeats =
        press.isAutoRepeat() || (press.timestamp() != 0 && press.timestamp() == returnReleased_);
    return isReturn(press) && repeats && !qobject_cast<const QTextEdit*>(focus) &&
           !qobject_cast<const QPlainTextEdit*>(focus);
}

bool KeyMonitor::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyRelease && watched->isWindowType())
        if (const auto& release = static_cast<const QKeyEvent&>(*event); isReturn(release))
            returnReleased_ = release.timestamp();
    // The native window receives a key press before its widgets do; only that first event is
    // handled.
    const bool asksForShortcuts = event->type() == QEvent::ShortcutOverride;
    if ((!asksForShortcuts && event->type() != QEvent::KeyPress) || !watched->isWindowType())
        return false;
    const auto& native = static_cast<const QKeyEvent&>(*event);
    if (isHeldReturn(native)) {
        event->accept();
        return true;
    }
    const KeyPress press = translate_(native);
    const KeySituation now = situation(native.isAutoRepeat());
    if (asksForShortcuts) {
        // The toolkit looks up its own shortcuts before the press itself arrives, unless the press
        // is claimed here.
        if (router_.decide(press, now).meaning == KeyRouter::Meaning::view)
            return false;
        event->accept();
        return true;
    }
    if (router_.handle(press, now))
        return true;
    return !now.menuOpen && !now.records && pressFocusedButton(native);
}

}  // namespace tembrix
