#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include "app/window_keys.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/key_transport.h"
#include "core/keyboard/key_windows.h"
#include "core/keyboard/text_focus.h"
#include "core/notifications/event_bus.h"
#include "core/notifications/events.h"
#include "fakes/captured_log.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

struct ProjectHasTheKeyboard final : KeyWindows {
    bool isControlOrLibraryKey() const override { return false; }
    bool isProjectWindowActive() const override { return true; }
    bool isViewerActive() const override { return false; }
};

struct CountingPlayer final : KeyTransport {
    void togglePlayPause() override { ++toggles; }
    double transportTime() const override { return 10; }
    void seek(double seconds) override { soughtTo = seconds; }
    int toggles = 0;
    double soughtTo = 0;
};

struct KeyMonitorTest : testing::Test {
    ProjectHasTheKeyboard windows;
    CountingPlayer player;
    EventBus events;
    VirtualScheduler scheduler;
    FocusStateManager focus;
    MemoryUserDefaults defaults;
    CapturedLog log;
    Settings settings{defaults, log};
    HotKeyManager hotkeys{events, scheduler, focus, player, settings};
    CommandKeys stored{defaults, log};
    Commands commands{stored, settings};
    FakeTexts texts;
    WindowKeys keys{commands, focus, texts, [this] { return &hotkeys; }};
    QWidget window;
    QPushButton* button = new QPushButton("Button", &window);
    int undone = 0;
    int found = 0;
    std::vector<Subscription> bound;
    int clicked = 0;
    std::vector<std::string> tags;
    Subscription struck = events.observe<events::ShowLabelSheet>(
        [this](const events::ShowLabelSheet& event) { tags.push_back(event.tag.name); });

    void SetUp() override {
        Tag tag;
        tag.id = tag.name = "tag";
        tag.hotkey = "⌘+Z";
        hotkeys.registerHotkeys({tag}, TagCollection::standard());
        hotkeys.setKeyWindows(&windows);
        (new QVBoxLayout(&window))->addWidget(button);
        const auto count = [](int& times) { return [&times] { ++times; }; };
        bound.push_back(commands.bind(Command::undo, {count(undone), {}, {}}));
        bound.push_back(commands.bind(Command::findCommand, {count(found), {}, {}}));
        WindowKeys::giveMenus(window, commands, texts, CommandScope::project);
        QObject::connect(button, &QPushButton::clicked, &window, count(clicked));
        show(window);
    }
    static void show(QWidget& top) {
        top.show();
        top.activateWindow();
        ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &top; }));
    }
    // Sends a key to the window, as the window system does.
    void strike(QWidget& top, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(top.windowHandle(), key, modifiers);
        scheduler.run();
    }
};

TEST_F(KeyMonitorTest, AHotKeyGoesBeforeACommandAndLeavesTheOthers) {
    strike(window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(tags, std::vector<std::string>{"tag"});
    EXPECT_EQ(undone, 0);
    strike(window, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(found, 1);
    hotkeys.clearHotkeys();
    strike(window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(undone, 1);
    EXPECT_EQ(tags.size(), 1u);
}

TEST_F(KeyMonitorTest, ReturnPressesAButtonAndSheetsAndMenusKeepTheirKeys) {
    button->setFocus();
    strike(window, Qt::Key_Return);
    EXPECT_EQ(clicked, 1);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, "\r", true);
    QApplication::sendEvent(window.windowHandle(), &held);
    EXPECT_EQ(clicked, 1);
    // A repetition that arrives as a release and a press of one moment.
    for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress}) {
        QKeyEvent half(type, Qt::Key_Return, {}, "\r");
        half.setTimestamp(1000);
        QApplication::sendEvent(window.windowHandle(), &half);
    }
    EXPECT_EQ(clicked, 1);

    QDialog sheet(&window);
    auto* box = new QCheckBox("Box", &sheet);
    (new QVBoxLayout(&sheet))->addWidget(box);
    show(sheet);
    box->setFocus();
    strike(sheet, Qt::Key_Space);
    EXPECT_TRUE(box->isChecked());
    EXPECT_EQ(player.toggles, 0);

    // While labels are chosen, the user can replay the moment.
    const auto choice = hotkeys.beginLabelChoice({});
    strike(sheet, Qt::Key_Space);
    strike(sheet, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_TRUE(box->isChecked());
    EXPECT_EQ(player.toggles, 1);
    EXPECT_EQ(player.soughtTo, 13);
    strike(sheet, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_FALSE(box->isChecked());
    hotkeys.endLabelChoice(choice);
    sheet.close();

    // A key that is held down does not answer the sheet that it has opened.
    QDialog question(&window);
    auto* yes = new QPushButton("Yes", &question);
    yes->setDefault(true);
    int answers = 0;
    QObject::connect(yes, &QPushButton::clicked, &question, [&] { ++answers; });
    show(question);
    QApplication::sendEvent(question.windowHandle(), &held);
    EXPECT_EQ(answers, 0);
    strike(question, Qt::Key_Return);
    EXPECT_EQ(answers, 1);
    question.close();

    QMenu menu(&window);
    menu.addAction("Action");
    menu.popup(window.mapToGlobal(QPoint()));
    strike(window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(tags.empty());
    menu.close();
}

}  // namespace
}  // namespace tembrix
