#include <QApplication>
#include <QProcess>
#include <QScreen>
#include <QTest>
#include <QWidget>
#include <QWindow>
#include <gtest/gtest.h>

#include "app/shell/window_factory.h"

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
    for (const WindowRow& row : windowTable())
        makers[row.kind] = [](QWidget* parent) { return new QWidget(parent); };
    factory.setMakers(makers, {});
    // With the decoration of the list window to go by, and without.
    for (const bool listShows : {true, false}) {
        list.setVisible(listShows);
        std::vector<std::unique_ptr<ProjectWindow>> windows;
        std::vector<QWidget*> shown;
        for (const WindowRow& row : windowTable()) {
            windows.push_back(factory.make(row, "title", {}));
            windows.back()->setFrame(row.frame(screen));
            const auto tops = QApplication::topLevelWidgets();
            shown.push_back(*std::find_if(tops.begin(), tops.end(), [&](const QWidget* top) {
                return top->objectName() == QLatin1String(row.titleKey);
            }));
        }
        for (const auto& window : windows)
            window->show();
        for (std::size_t i = 0; i < shown.size(); ++i) {
            const WindowRow& row = windowTable()[i];
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

}  // namespace
}  // namespace tembrix
