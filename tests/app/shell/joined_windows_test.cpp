#include "app/shell/joined_windows.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <vector>

#include "app/shell/window_factory.h"
#include "app/window_tests.h"

namespace tembrix {
namespace {

// The windows of a project as panes, each with two text fields.
struct JoinedWindowsTest : testing::Test {
    QtWindowFactory factory;
    std::vector<std::unique_ptr<ProjectWindow>> handles;
    std::map<WindowKind, KeyState> keys;
    std::vector<WindowKind> closed;
    bool mayClose = true;

    JoinedWindowsTest() {
        QtWindowFactory::Makers makers;
        for (const WindowRow& row : windowTable())
            makers[row.kind] = [](QWidget* parent) {
                auto* content = new QWidget(parent);
                auto* column = new QVBoxLayout(content);
                for (int i = 0; i < 2; ++i)
                    column->addWidget(new QLineEdit(content));
                return content;
            };
        factory.setMakers(makers, {});
        factory.setJoined(true);
        for (const WindowRow& row : windowTable()) {
            if (!row.closesProject)
                continue;
            handles.push_back(
                factory.make(row, row.titleKey,
                             {[this] { return mayClose; },
                              [this, &row] {
                                  closed.push_back(row.kind);
                                  handles.clear();
                              },
                              [this, &row](KeyState state) { keys[row.kind] = state; }}));
        }
        for (const auto& handle : handles)
            handle->show();
    }
    QWidget* pane(WindowKind kind) const {
        for (QWidget* window : factory.windows())
            if (window->objectName() == QLatin1String(windowRow(kind).titleKey))
                return window;
        return nullptr;
    }
    QWidget& host() const { return *pane(WindowKind::video)->window(); }
    std::vector<WindowKind> withKeys(KeyState state = KeyState::window) const {
        std::vector<WindowKind> found;
        for (const auto& [kind, each] : keys)
            if (each == state)
                found.push_back(kind);
        return found;
    }
};

using Kinds = std::vector<WindowKind>;

TEST_F(JoinedWindowsTest, ThePaneWithTheFocusHasTheKeys) {
    ASSERT_TRUE(activate(host()));
    EXPECT_EQ(factory.windows().size(), handles.size());
    EXPECT_TRUE(hasKeyboard(*factory.windows().back())) << "the last one shown";

    for (const WindowKind kind : {WindowKind::control, WindowKind::video}) {
        bringForward(*pane(kind));
        EXPECT_TRUE(hasKeyboard(*pane(kind)));
        EXPECT_EQ(withKeys(), Kinds{kind});
        const auto fields = pane(kind)->findChildren<QLineEdit*>();
        EXPECT_EQ(QApplication::focusWidget(), fields.front());
        fields.front()->setEnabled(false);
        EXPECT_EQ(QApplication::focusWidget(), fields.back());
        QTest::keyClick(fields.back(), Qt::Key_Tab);
        EXPECT_TRUE(hasKeyboard(*pane(kind)));
    }
    // A press beside the controls of a pane.
    QWidget* panel = pane(WindowKind::tagLibrary);
    QTest::mouseClick(host().windowHandle(), Qt::LeftButton, {},
                      panel->mapTo(&host(), panel->rect().bottomRight() - QPoint(2, 2)));
    EXPECT_EQ(withKeys(), Kinds{WindowKind::tagLibrary});

    QDialog sheet(&host());
    sheet.setWindowModality(Qt::WindowModal);
    sheet.open();
    ASSERT_TRUE(activate(sheet));
    EXPECT_TRUE(withKeys().empty());
    EXPECT_EQ(withKeys(KeyState::sheet), Kinds{WindowKind::tagLibrary});
    sheet.close();
    ASSERT_TRUE(activate(host()));
    EXPECT_EQ(withKeys(), Kinds{WindowKind::tagLibrary});
}

TEST_F(JoinedWindowsTest, TheWindowClosesByTheRulesOfItsFirstPane) {
    ASSERT_TRUE(activate(host()));
    const QPointer<QWidget> window(&host());
    const QPointer<QDialog> sheet(new QDialog(window));
    sheet->show();
    mayClose = false;
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(closed.empty());
    mayClose = true;
    window->close();
    EXPECT_EQ(closed, Kinds{WindowKind::video});
    EXPECT_FALSE(sheet) << "it uses the contents";
    EXPECT_TRUE(factory.windows().empty());
    EXPECT_FALSE(window && window->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(window);
}

}  // namespace
}  // namespace tembrix
