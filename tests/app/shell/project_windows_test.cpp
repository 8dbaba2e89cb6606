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
            windowMakers(program.core,
                         [](QWidget* parent) -> QWidget* { return new QLabel(parent); }),
            {.menuBar = [this](QWidget* parent) {
                return new CommandMenuBar(program.core.commands, program.texts,
                                          CommandScope::project, parent);
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

TEST_F(ProjectWindowsTest, OnlyTheLabelSheetHasTheKeysOfItsLabels) {
    open();
    auto& project = *windows.project();
    project.timeline.addLine("Moments");
    const auto& tags = program.tagLibrary.active->tags;
    const auto asks = std::find_if(tags.begin(), tags.end(), [&](const Tag& tag) {
        return project.marking.asksForLabels(tag) && !tag.isInterval.value_or(false);
    });
    ASSERT_NE(asks, tags.end());
    Tag tag = *asks;
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
