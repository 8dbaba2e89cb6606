#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>
#include <set>

#include "app/window_keys.h"
#include "app/window_tests.h"
#include "core/keyboard/text_focus.h"
#include "fakes/captured_log.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_user_defaults.h"

namespace tembrix {
namespace {

struct CommandMenusTest : testing::Test {
    MemoryUserDefaults defaults;
    CapturedLog log;
    CommandKeys stored{defaults, log};
    Settings settings{defaults, log};
    Commands commands{stored, settings};
    FakeTexts texts;
    FocusStateManager focus;
    QWidget first, second;
    WindowKeys keys{commands, focus, texts, [] { return nullptr; },
                    [this] {
                        return std::vector<QWidget*>{&first, &second};
                    }};

    void show(QWidget& window, CommandScope scope = CommandScope::project) {
        WindowKeys::giveMenus(window, commands, texts, scope);
        window.resize(500, 300);
        window.show();
        ASSERT_TRUE(activate(window));
    }
    void strike(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWindow(), key, modifiers);
    }
    static QWidget* sheet() {
        QWidget* top = QApplication::activeModalWidget();
        return top && activate(*top) ? top : nullptr;
    }
};

TEST_F(CommandMenusTest, EveryCommandOfAWindowIsInItsMenusWithAMnemonicOfItsOwn) {
    for (const CommandScope scope : {CommandScope::list, CommandScope::project}) {
        CommandMenuBar bar(commands, texts, scope);
        std::set<QString> entries;
        for (const QAction* title : bar.actions()) {
            std::set<QChar> letters;
            for (const QAction* entry : title->menu()->actions()) {
                if (entry->isSeparator())
                    continue;
                entries.insert(entry->objectName());
                const auto at = entry->text().indexOf('&');
                ASSERT_GE(at, 0) << entry->text().toStdString();
                EXPECT_TRUE(letters.insert(entry->text()[at + 1].toLower()).second)
                    << entry->text().toStdString();
            }
        }
        for (const CommandRow& row : commandTable())
            EXPECT_EQ(entries.contains(row.name), isOffered(row, scope)) << row.name;
    }
}

TEST_F(CommandMenusTest, AMenuShowsWhatIsEnabledWhenItOpens) {
    bool allowed = false;
    int undone = 0;
    const auto undo =
        commands.bind(Command::undo, {[&] { ++undone; }, [&] { return allowed; }, {}});
    const auto mode = commands.bind(Command::standardMode, {[] {}, {}, [&] { return allowed; }});
    CommandMenuBar bar(commands, texts, CommandScope::project);
    auto* entry = bar.findChild<QAction*>("undo");
    EXPECT_FALSE(entry->isEnabled());
    allowed = true;
    Q_EMIT bar.findChild<QMenu*>("menuEdit")->aboutToShow();
    EXPECT_TRUE(entry->isEnabled());
    EXPECT_TRUE(bar.findChild<QAction*>("standardMode")->isChecked());
    EXPECT_EQ(entry->shortcut().toString(), "Ctrl+Z");
    entry->trigger();
    EXPECT_EQ(undone, 1);
}

TEST_F(CommandMenusTest, TheSearchFindsACommandByItsWordsAndRunsIt) {
    int zoomed = 0;
    const auto zoom = commands.bind(Command::zoomIn, {[&] { ++zoomed; }, {}, {}});
    show(first);
    strike(Qt::Key_K, Qt::ControlModifier);
    QWidget* palette = sheet();
    ASSERT_TRUE(palette);
    QTest::keyClicks(child(*palette, "commandFindCommandSearch"), "zoomin");
    auto* rows = child<QTreeWidget>(*palette, "commandFindCommandList");
    ASSERT_TRUE(rows->currentItem());
    EXPECT_EQ(rows->currentItem()->text(1), "Ctrl+=");
    strike(Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return zoomed == 1; }));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !QApplication::activeModalWidget(); }));

    strike(Qt::Key_K, Qt::ControlModifier);
    palette = sheet();
    ASSERT_TRUE(palette);
    QTest::keyClicks(child(*palette, "commandFindCommandSearch"), "zoomout");
    strike(Qt::Key_Return);  // nobody can carry it out now
    EXPECT_TRUE(palette->isVisible());
    strike(Qt::Key_Escape);
}

TEST_F(CommandMenusTest, FunctionKeysWalkThroughTheWindowsAndOpenTheMenusAndTheList) {
    show(first);
    show(second, CommandScope::list);
    strike(Qt::Key_F6);
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &first; }));
    strike(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &second; }));
    strike(Qt::Key_F1);
    QWidget* list = sheet();
    ASSERT_TRUE(list);
    EXPECT_FALSE(child<QTreeWidget>(*list, "keysTitle")
                     ->findItems("fullControlUndo", Qt::MatchContains)
                     .size())
        << "a key of another window";
    strike(Qt::Key_Return);
    ASSERT_TRUE(activate(second));
    CommandMenuBar::of(&second)->show();
    strike(Qt::Key_F10);
    EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }));
    QApplication::activePopupWidget()->close();
}

}  // namespace
}  // namespace tembrix
