#include "tour/driver.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QElapsedTimer>
#include <QMenu>
#include <QPixmap>
#include <QScreen>
#include <QTest>
#include <QWindow>
#include <cstdio>

#include "app/shell/joined_windows.h"

namespace tembrix::tour {

namespace {

// Keys are sent to the window, so that the program's key monitor receives them first.
QWindow* keyboardWindow() {
    if (QWidget* popup = QApplication::activePopupWidget())
        return popup->windowHandle();
    return QGuiApplication::focusWindow();
}

}  // namespace

Driver::Driver(std::filesystem::path output) : output_(std::move(output)) {}

void Driver::say(const QString& text) const {
    std::printf("  %s\n", qUtf8Printable(text));
    std::fflush(stdout);
}

void Driver::waitFor(const QString& what, const std::function<bool()>& condition,
                     double seconds) const {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (static_cast<double>(timer.elapsed()) > seconds * 1000)
            throw Failure("waited in vain for " + what.toStdString());
        QTest::qWait(10);
    }
}

void Driver::pause(double seconds) const {
    QTest::qWait(static_cast<int>(seconds * 1000));
}

QWidget* Driver::find(const QString& name) const {
    for (QWidget* widget : QApplication::allWidgets()) {
        if (widget->objectName() == name && widget->isVisible())
            return widget;
    }
    return nullptr;
}

QWidget* Driver::control(const QString& name) const {
    waitFor("the control " + name, [&] { return find(name) != nullptr; });
    return find(name);
}

bool Driver::isVisible(const QString& name) const {
    return find(name) != nullptr;
}

void Driver::waitGone(const QString& name) const {
    waitFor(
        name + " to close", [&] { return !find(name); }, 60);
}

void Driver::click(const QString& name) const {
    QWidget* widget = control(name);
    waitFor(name + " to be enabled", [&] { return widget->isEnabled(); });
    clickAt(widget, widget->rect().center());
}

void Driver::clickAt(QWidget* widget, const QPoint& place) const {
    QTest::mouseClick(widget, Qt::LeftButton, {}, place);
    QTest::qWait(30);
}

void Driver::drag(QWidget* widget, const QPoint& from, const QPoint& to,
                  const std::function<void()>& halfWay) const {
    constexpr int steps = 12;
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    for (int i = 1; i <= steps; ++i) {
        QTest::mouseMove(widget, from + (to - from) * i / steps);
        QTest::qWait(40);
        if (i == steps * 3 / 4 && halfWay)
            halfWay();
    }
    QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
    QTest::qWait(30);
}

void Driver::key(int key, Qt::KeyboardModifiers modifiers) const {
    waitFor(QStringLiteral("a window with the keyboard"),
            [] { return keyboardWindow() != nullptr; });
    QTest::keyClick(keyboardWindow(), static_cast<Qt::Key>(key), modifiers);
    QTest::qWait(30);
}

void Driver::type(const QString& text) const {
    for (const QChar letter : text)
        QTest::keyClick(keyboardWindow(), letter.toLatin1());
    QTest::qWait(30);
}

void Driver::choose(const QString& button, const QString& entry) const {
    control(button)->setFocus();
    key(Qt::Key_Return);
    chooseEntry(entry);
}

void Driver::openMenu() const {
    QWidget* focused = QApplication::focusWidget();
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, focused->rect().center(),
                           focused->mapToGlobal(focused->rect().center()));
    QApplication::sendEvent(focused, &menu);
}

void Driver::openMenuAt(QWidget* widget, const QPoint& place) const {
    QContextMenuEvent menu(QContextMenuEvent::Mouse, place, widget->mapToGlobal(place));
    QApplication::sendEvent(widget, &menu);
}

void Driver::chooseEntry(const QString& entry) const {
    waitFor("the menu with " + entry, [] { return QApplication::activePopupWidget() != nullptr; });
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    for (int i = 0; menu && i <= menu->actions().size(); ++i) {
        if (menu->activeAction() && menu->activeAction()->objectName() == entry) {
            key(Qt::Key_Return);
            return;
        }
        key(Qt::Key_Down);
    }
    throw Failure("no entry " + entry.toStdString() + " in the open menu");
}

void Driver::hover(QWidget* widget, const QPoint& place) const {
    // The first movement only enters the widget.
    QTest::mouseMove(widget, place + QPoint(4, 0));
    QTest::qWait(150);
    QTest::mouseMove(widget, place);
    QTest::qWait(150);
}

QDialog* Driver::sheet() const {
    const auto active = [] { return qobject_cast<QDialog*>(QApplication::activeWindow()); };
    waitFor("a sheet", [&] { return active() != nullptr; });
    return active();
}

void Driver::noSheet() const {
    waitFor("the sheet to close",
            [] { return !qobject_cast<QDialog*>(QApplication::activeWindow()); });
}

QWidget* Driver::window(const QString& name) const {
    QWidget* found = nullptr;
    waitFor("the window " + name, [&] {
        for (QWidget* candidate : QApplication::allWidgets()) {
            const bool outermost = !found || candidate->isAncestorOf(found);
            if (candidate->objectName() == name && candidate->isVisible() && outermost)
                found = candidate;
        }
        return found != nullptr;
    });
    return found;
}

void Driver::activate(const QString& name) const {
    QWidget* top = window(name);
    bringForward(*top);
    waitFor(name + " to be active", [&] { return hasKeyboard(*top); });
}

void Driver::picture(const QString& name, QWidget* window) const {
    QTest::qWait(120);
    const QString file = QString::fromStdString(
        (output_ / (std::to_string(++pictures_) + "-" + name.toStdString() + ".png")).string());
    // Taken from the screen, so that the surface of the video is included.
    QWidget* top = window->window();
    QPixmap shown = top->screen()->grabWindow(top->winId());
    if (shown.isNull())  // not every display shows a program its windows
        shown = top->grab();
    if (window != top)
        shown = shown.copy(QRect(window->mapTo(top, QPoint()), window->size()));
    shown.save(file);
    say("picture: " + name);
}

void Driver::screen(const QString& name) const {
    QTest::qWait(200);
    const QString file = QString::fromStdString(
        (output_ / (std::to_string(++pictures_) + "-" + name.toStdString() + ".png")).string());
    QGuiApplication::primaryScreen()->grabWindow(0).save(file);
    say("picture: " + name);
}

}  // namespace tembrix::tour
