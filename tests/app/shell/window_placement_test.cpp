#include <QApplication>
#include <QProcess>
#include <QScreen>
#include <QTest>
#include <QWidget>
#include <QWindow>
#include <gtest/gtest.h>

#include "app/shell/window_factory.h"
#include "core/storage/data_layout.h"
#include "fakes/memory_user_defaults.h"

namespace tembrix {
namespace {

QRect pixels(const Rect& rect) {
    return QRect(QPoint(qRound(rect.x), qRound(rect.y)),
                 QPoint(qRound(rect.right()) - 1, qRound(rect.bottom()) - 1));
}

// A real window manager, whose decoration has a title bar and borders.
struct WindowPlacement : testing::Test {
    void SetUp() override {
        manager.start("openbox", {"--sm-disable"});
        ASSERT_TRUE(manager.waitForStarted());
        list.resize(300, 200);
        list.show();
        ASSERT_TRUE(QTest::qWaitFor([&] { return list.windowHandle()->frameMargins().top() > 0; }))
            << "the window manager does not decorate windows";
    }
    ~WindowPlacement() override {
        manager.terminate();
        manager.waitForFinished();
    }

    QProcess manager;
    QWidget list;
    QtWindowFactory factory;
};

TEST_F(WindowPlacement, WindowsOfAProjectFillTheirFramesWithTheirDecoration) {
    const Rect screen = factory.mainScreenFrame().value();
    QtWindowFactory::Makers makers;
    std::vector<WindowRow> rows;
    for (const WindowRow& row : windowTable())
        if (row.frame)
            rows.push_back(row);
    for (const WindowRow& row : rows)
        makers[row.kind] = [](QWidget* parent) { return new QWidget(parent); };
    factory.setMakers(makers, {});
    // With the decoration of the list window to go by, and without.
    for (const bool listShows : {true, false}) {
        list.setVisible(listShows);
        std::vector<std::unique_ptr<ProjectWindow>> windows;
        std::vector<QWidget*> shown;
        for (const WindowRow& row : rows) {
            windows.push_back(factory.make(row, "title", {}));
            windows.back()->setFirstFrame(row.frame(screen));
            const auto tops = QApplication::topLevelWidgets();
            shown.push_back(*std::find_if(tops.begin(), tops.end(), [&](const QWidget* top) {
                return top->objectName() == QLatin1String(row.titleKey);
            }));
        }
        for (const auto& window : windows)
            window->show();
        for (std::size_t i = 0; i < shown.size(); ++i) {
            const WindowRow& row = rows[i];
            const auto frame = [&] { return shown[i]->windowHandle()->frameGeometry(); };
            EXPECT_TRUE(QTest::qWaitFor([&] {
                return !shown[i]->windowHandle()->frameMargins().isNull() &&
                       frame() == pixels(row.frame(screen));
            })) << row.titleKey
                << " ends at " << frame().right() << ", " << frame().bottom();
        }
        windows.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(WindowPlacement, WindowsOpenWhereTheyWereLeft) {
    MemoryUserDefaults defaults;
    QtWindowFactory remembering(&defaults);
    remembering.setMakers(
        {{WindowKind::video, [](QWidget* parent) { return new QWidget(parent); }}}, {});
    const WindowRow& row = windowRow(WindowKind::video);
    const QRect first = pixels(row.frame(remembering.mainScreenFrame().value()));
    const std::string key = layout::windowPlaceKey(row.titleKey);
    std::unique_ptr<ProjectWindow> window;
    QWidget* shown = nullptr;
    const auto open = [&] {
        window.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        window = remembering.make(row, "title", {});
        window->setFirstFrame(
            {double(first.x()), double(first.y()), double(first.width()), double(first.height())});
        window->show();
        shown = remembering.windows().back();
        return shown;
    };
    const auto isAt = [&](const QRect& frame) {
        return QTest::qWaitFor([&] {
            return shown->windowHandle()->frameMargins().top() > 0 &&
                   shown->frameGeometry() == frame;
        });
    };
    open();
    ASSERT_TRUE(isAt(first));
    const QRect moved(120, 130, 640, 480);
    const QMargins decoration = shown->windowHandle()->frameMargins();
    shown->setGeometry(moved.marginsRemoved(decoration));
    ASSERT_TRUE(isAt(moved));
    open();
    EXPECT_TRUE(isAt(moved));
    shown->showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return shown->width() > 1500; }));
    open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown->isMaximized() && shown->width() > 1500; }));
    shown->showNormal();
    EXPECT_TRUE(isAt(moved));

    // A killed process loses only the last second.
    shown->setGeometry(first.marginsRemoved(decoration));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !defaults.text(key); }))
        << "the first frame may follow the screen, but " << *defaults.text(key);

    // The screen that showed the window is gone.
    defaults.setText(key, "5000 -400 640 480");
    open();
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    EXPECT_TRUE(isAt(QRect(screen.right() + 1 - 640, screen.top(), 640, 480)))
        << shown->frameGeometry().x();
    for (const char* damaged : {"", "1 2 3", "1 2 3 4", "a b c d", "0 0 99999 400"}) {
        window.reset();
        defaults.setText(key, damaged);
        open();
        EXPECT_TRUE(isAt(first)) << damaged;
    }
}

}  // namespace
}  // namespace tembrix
