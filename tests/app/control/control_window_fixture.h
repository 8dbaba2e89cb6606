#pragma once

#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <QWindow>
#include <gtest/gtest.h>
#include <optional>

#include "app/control/control_project.h"
#include "app/control/full_control_view.h"
#include "app/control/line_names_view.h"
#include "app/control/timeline_canvas.h"
#include "app/widgets/qt_text.h"
#include "app/window_keys.h"
#include "app/window_tests.h"

namespace tembrix {

inline ControlServices controlServices(AppProject& app) {
    return {app.timeline,  app.history,    app.player,        app.hotkeys,  app.markupModes,
            app.exports,   app.tagLibrary, app.focus,         app.defaults, app.core.health,
            app.scheduler, app.events,     app.core.commands, app.panels,   app.texts};
}

// The control window with two lines, and functions for user input.
class ControlWindowTest : public testing::Test {
  protected:
    ControlWindowTest() {
        a = app.addLine("Attack");
        b = app.addLine("Defence");
        view = std::make_unique<FullControlView>(controlServices(app));
        windowKeys.emplace(app.core.commands, app.focus, app.texts,
                           [this] { return &app.hotkeys; });
        WindowKeys::giveMenus(*view, app.core.commands, app.texts, CommandScope::project);
        view->resize(1280, 430);
        view->show();
        view->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(view.get()));
        canvas = view->findChild<TimelineCanvas*>();
        names = view->findChild<LineNamesView*>();
    }

    Uuid addLine(const std::string& name) { return app.addLine(name); }
    Uuid addStamp(const Uuid& line, double start, double finish,
                  const std::string& label = "Pass") {
        return app.addStamp(line, start, finish, label);
    }
    const TimelineStamp* stamp(const Uuid& id) { return app.stamp(id); }
    QRectF area(const Uuid& id) {
        const auto hit = view->model().rows().findStamp(id);
        return canvas->stampArea(hit->row, *hit->stamp);
    }
    double x(double time) { return canvas->axis().x(time) - canvas->scrollX(); }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton) {
        const Qt::MouseButtons held =
            type == QEvent::MouseButtonPress || (type == QEvent::MouseMove && button)
                ? button
                : Qt::NoButton;
        QMouseEvent event(type, at, canvas->mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : button, held, Qt::NoModifier);
        event.setTimestamp(clock += 200);
        QApplication::sendEvent(canvas, &event);
    }
    void click(QPointF at) {
        mouse(QEvent::MouseButtonPress, at);
        mouse(QEvent::MouseButtonRelease, at);
    }
    void drag(QPointF from, QPointF to) {
        mouse(QEvent::MouseButtonPress, from);
        for (int i = 1; i <= 10; ++i)
            mouse(QEvent::MouseMove, from + (to - from) * i / 10);
        mouse(QEvent::MouseButtonRelease, to);
    }
    void hover(QPointF at) { mouse(QEvent::MouseMove, at, Qt::NoButton); }

    template <class Widget = QAbstractButton>
    Widget* find(const char* name, QWidget* in = nullptr) {
        return (in ? in : view.get())->findChild<Widget*>(name);
    }
    void press(const char* name, QWidget* in = nullptr) {
        auto* button = find<QAbstractButton>(name, in);
        ASSERT_TRUE(button) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // Sends a key to the window first, as the window system does.
    void key(Qt::Key code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        view->activateWindow();
        EXPECT_TRUE(!view->isVisible() || QTest::qWaitForWindowActive(view.get()));
        QTest::keyClick(view->windowHandle(), code, modifiers);
        app.settle();
    }
    QMenu* menu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    QStringList menuKeys() {
        QStringList keys;
        for (const QAction* action : menu()->actions())
            if (!action->isSeparator())
                keys << action->objectName();
        return keys;
    }
    void choose(const char* name) {
        ASSERT_TRUE(menu());
        auto* action = menu()->findChild<QAction*>(name);
        ASSERT_TRUE(action) << name;
        menu()->setActiveAction(action);
        QTest::keyClick(menu(), Qt::Key_Return);
        app.settle(0.2);
    }
    void contextMenu(QWidget* widget, QPoint at,
                     QContextMenuEvent::Reason reason = QContextMenuEvent::Mouse) {
        QContextMenuEvent event(reason, at, widget->mapToGlobal(at));
        QApplication::sendEvent(widget, &event);
    }
    template <class Type>
    Type* sheet() {
        app.settle();
        for (QWidget* top : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<Type*>(top); found && found->isVisible())
                return found;
        return nullptr;
    }
    std::vector<std::string> lineNames() {
        std::vector<std::string> result;
        for (const auto& line : *app.timeline.lines)
            result.push_back(line->name);
        result.erase(result.begin());  // the drawings line
        return result;
    }
    FakePlayer& player() { return *app.players.player(); }

    ControlProject app;
    Uuid a;
    Uuid b;
    std::optional<WindowKeys> windowKeys;
    std::unique_ptr<FullControlView> view;
    TimelineCanvas* canvas = nullptr;
    LineNamesView* names = nullptr;
    quint64 clock = 1000;
};

}  // namespace tembrix
