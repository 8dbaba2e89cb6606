#include "app/shell/project_windows.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include "app/window_keys.h"
#include "app/window_tests.h"
#include "core/storage/data_layout.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

// The real windows of a project over a core on fakes.
struct ProjectWindowsTest : testing::Test {
    QtWindowFactory factory;
    CoreProgram program{factory};
    WindowsManager& windows = program.core.windows;
    WindowKeys keys{program.core.commands, program.focus, program.texts,
                    [this] { return windows.project() ? &windows.project()->hotkeys : nullptr; }};
    std::string video = program.addVideo();

    ProjectWindowsTest() {
        factory.setMakers(
            windowMakers(
                program.core, [](QWidget* parent) -> QWidget* { return new QLabel(parent); },
                &WindowKeys::translate),
            {.menuBar = [this](QWidget* parent, CommandScope scope) {
                return new CommandMenuBar(program.core.commands, program.texts, scope, parent);
            }});
    }
    static QWidget* window(const char* name) {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->isVisible() && top->objectName() == QLatin1String(name))
                return top;
        return nullptr;
    }
    static QDialog* sheet() {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (auto* dialog = qobject_cast<QDialog*>(top); dialog && dialog->isVisible())
                return dialog;
        return nullptr;
    }
    void settle() {
        program.scheduler.advance(1);
        QApplication::processEvents();
    }
    void open() {
        windows.openProject(video);
        ASSERT_TRUE(windows.project());
        ASSERT_TRUE(activate(*window("timelines")));
    }
    Tag tagThatAsks() {
        const auto& tags = program.tagLibrary.active->tags;
        return *std::find_if(tags.begin(), tags.end(), [&](const Tag& tag) {
            return windows.project()->marking.asksForLabels(tag) && !tag.isInterval.value_or(false);
        });
    }
    // Presses the key of a tag without labels. Returns whether it made a stamp.
    bool marks() {
        const auto count = [this] {
            std::size_t all = 0;
            for (const auto& line : *windows.project()->timeline.lines)
                all += line->stamps.size();
            return all;
        };
        windows.project()->timeline.addLine("Moments");
        const std::size_t before = count();
        QTest::keyClick(QApplication::focusWindow(), Qt::Key_N);
        settle();
        return count() == before + 1;
    }
};

TEST_F(ProjectWindowsTest, AProjectThatIsClosedUnderASheetLeavesTheNextOneItsKeys) {
    const auto choose = [](const char* action) {
        child<QAction>(*window("timelines"), action)->trigger();
    };
    const std::vector<std::function<void()>> sheets{
        [&] { choose("fullControlButtonExportTimeline"); },
        [&] { choose("fullControlButtonExportTags"); },
        [] {
            child<QAbstractButton>(*window("timelines"), "fullControlButtonAddTimeline")->click();
        },
    };
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        SCOPED_TRACE(i);
        open();
        sheets[i]();
        QApplication::processEvents();
        ASSERT_TRUE(sheet());
        window("video")->close();
        EXPECT_FALSE(windows.project());
        EXPECT_FALSE(sheet());
        for (const char* name : {"video", "timelines", "tagLibrary"})
            EXPECT_FALSE(window(name)) << name;

        open();
        EXPECT_TRUE(marks());
        window("tagLibrary")->close();
        settle();
        EXPECT_FALSE(windows.project());
    }
}

TEST_F(ProjectWindowsTest, AMarkWithoutATimelineGoesOnWhenOneIsAdded) {
    open();
    auto& project = *windows.project();
    const Tag tag = tagThatAsks();
    const auto begin = [&] {
        ASSERT_TRUE(activate(*window("video")));
        project.player.play();
        project.marking.handleTagHotkey(tag);
        ASSERT_TRUE(child(*sheet(), "tagLibraryNoTimeline"));
        ASSERT_TRUE(activate(*sheet()));
        QTest::keyClick(sheet(), Qt::Key_Return);
        settle();
        ASSERT_TRUE(sheet());
        ASSERT_TRUE(child(*sheet(), "timelineName"));
        ASSERT_TRUE(activate(*sheet()));
    };
    const auto isActive = [](const char* name) {
        return QTest::qWaitFor([name] { return window(name)->isActiveWindow(); });
    };
    begin();
    QTest::keyClick(sheet(), Qt::Key_Escape);
    QTest::qWait(1);
    settle();
    EXPECT_FALSE(sheet());
    EXPECT_EQ(*project.player.status, PlayerStatus::playing);
    EXPECT_TRUE(isActive("video"));

    begin();
    QTest::keyClicks(child<QLineEdit>(*sheet(), "timelineName"), "Moments");
    QTest::keyClick(sheet(), Qt::Key_Return);
    QTest::qWait(1);
    settle();
    ASSERT_TRUE(sheet());
    EXPECT_EQ(*project.player.status, PlayerStatus::paused);
    ASSERT_TRUE(child(*sheet(), "collectionsButtonAdd"));
    ASSERT_TRUE(activate(*sheet()));
    QTest::keyClick(sheet(), Qt::Key_Return);
    settle();
    const TimelineLine& line = *project.timeline.lines->back();
    EXPECT_EQ(line.name, "Moments");
    ASSERT_EQ(line.stamps.size(), 1u);
    EXPECT_EQ(line.stamps[0]->idTag, tag.id);
    EXPECT_EQ(*project.player.status, PlayerStatus::playing);
    EXPECT_TRUE(isActive("video"));
    windows.closeAll();
}

TEST_F(ProjectWindowsTest, TheVideoWaitsWhileAPanelAsks) {
    open();
    VideoPlayerManager& player = windows.project()->player;
    player.play();
    bool deleted = false;
    program.core.panels.confirm("Delete?", "", "Delete", [&](bool yes) { deleted = yes; });
    EXPECT_EQ(*player.status, PlayerStatus::paused);
    program.panels.answerConfirm(true);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(*player.status, PlayerStatus::playing);

    // The project may be closed before the answer.
    program.core.panels.confirm("Delete?", "", "Delete", [](bool) {});
    windows.closeAll();
    open();
    windows.project()->player.pause();
    program.panels.answerConfirm(true);
    EXPECT_EQ(*windows.project()->player.status, PlayerStatus::paused);
    windows.closeAll();
}

TEST_F(ProjectWindowsTest, AReopenedMatchContinuesWhereItWasLeft) {
    const std::string key = layout::positionKey(video);
    const auto player = [this]() -> FakePlayer& { return *program.players.player(); };
    const auto reopenedAt = [&] {
        window("video")->close();
        settle();
        open();
        return player().currentTime();
    };
    open();
    EXPECT_EQ(player().currentTime(), 0);
    player().advanceTo(30);
    program.scheduler.advance(PositionMemory::storeInterval);
    EXPECT_EQ(program.defaults.text(key), "30") << "stored while the project is open";
    player().advanceTo(40);
    EXPECT_EQ(reopenedAt(), 40);
    EXPECT_EQ(player().status(), PlayerStatus::playing);
    player().advanceTo(97);
    EXPECT_EQ(reopenedAt(), 0) << "seen to the end";

    // A window that closes at once, and a file that cannot be opened, change nothing.
    player().advanceTo(50);
    EXPECT_EQ(reopenedAt(), 50);
    EXPECT_EQ(reopenedAt(), 50);
    program.players.failure = Error{"player", 2, "no video"};
    reopenedAt();
    program.players.failure.reset();
    EXPECT_EQ(reopenedAt(), 50);

    // The entry is bound to a shorter file, and its value is damaged.
    program.players.duration = 45;
    EXPECT_EQ(reopenedAt(), 0);
    for (const char* damaged : {"", "fifty", "-3", "inf", "1e999", "20 "}) {
        windows.closeAll();
        program.defaults.setText(key, damaged);
        open();
        EXPECT_EQ(player().currentTime(), 0) << damaged;
    }

    player().advanceTo(20);
    EXPECT_TRUE(program.library.deleteVideo(program.library.files().front()).ok());
    windows.libraryChanged();
    EXPECT_FALSE(windows.project());
    EXPECT_FALSE(program.defaults.text(key));
}

TEST_F(ProjectWindowsTest, OnlyTheLabelSheetHasTheKeysOfItsLabels) {
    open();
    auto& project = *windows.project();
    project.timeline.addLine("Moments");
    Tag tag = tagThatAsks();
    const auto& group = *std::find_if(
        program.tagLibrary.active->labelGroups.begin(),
        program.tagLibrary.active->labelGroups.end(),
        [&](const auto& candidate) { return candidate.id == tag.lablesGroup.front(); });
    tag.labelHotkeys = {{group.lables.front(), "n"}};
    project.hotkeys.registerHotkeys({tag}, {});
    project.marking.handleTagHotkey(tag);
    QDialog* labels = sheet();
    ASSERT_TRUE(labels);
    ASSERT_TRUE(activate(*labels));
    int chosen = 0;
    const auto observed = program.events.observe<events::LabelHotkeyPressed>(
        [&](const events::LabelHotkeyPressed&) { ++chosen; });
    QTest::keyClick(QApplication::focusWindow(), Qt::Key_N);
    EXPECT_EQ(chosen, 1);

    // Such as the panel of an export that was started before.
    for (QWidget* owner : {static_cast<QWidget*>(labels), window("timelines")}) {
        QDialog panel(owner);
        auto* name = new QLineEdit(&panel);
        panel.setWindowModality(Qt::WindowModal);
        panel.open();
        ASSERT_TRUE(activate(panel));
        QTest::keyClick(QApplication::focusWindow(), Qt::Key_N, Qt::NoModifier);
        EXPECT_EQ(chosen, 1);
        EXPECT_FALSE(name->text().isEmpty());
    }
    ASSERT_TRUE(activate(*labels));
    QTest::keyClick(QApplication::focusWindow(), Qt::Key_N);
    EXPECT_EQ(chosen, 2);
    windows.closeAll();
}

}  // namespace
}  // namespace tembrix
