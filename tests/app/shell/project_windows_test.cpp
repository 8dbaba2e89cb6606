#include "app/shell/project_windows.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QTest>
#include <QWindow>
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

}  // namespace
}  // namespace tembrix
