#pragma once

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>
#include <string>

#include "app/shell/project_windows.h"
#include "app/window_keys.h"
#include "app/window_tests.h"
#include "fakes/core_project.h"

namespace tembrix {

// The windows of the program over a core on fakes, with the settings window open.
struct SettingsWindow : testing::Test {
    QtWindowFactory factory;
    CoreProgram program{factory};
    CoreServices& core = program.core;
    WindowsManager& windows = core.windows;
    Settings& settings = core.settings;
    WindowKeys keys{core.commands, program.focus, program.texts,
                    [this] { return windows.project() ? &windows.project()->hotkeys : nullptr; }};

    SettingsWindow() {
        factory.setMakers(windowMakers(
                              core, [](QWidget* parent) -> QWidget* { return new QLabel(parent); },
                              &WindowKeys::translate),
                          {.menuBar = [this](QWidget* parent, CommandScope scope) {
                              return new CommandMenuBar(core.commands, program.texts, scope,
                                                        parent);
                          }});
    }
    ~SettingsWindow() override { windows.closeEverything(); }

    static QWidget* window(const char* name) {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->isVisible() && top->objectName() == QLatin1String(name))
                return top;
        return nullptr;
    }
    QWidget& open(int page) {
        core.commands.run(Command::settings);
        QWidget& shown = *window("settings");
        EXPECT_TRUE(activate(shown));
        child<QListWidget>(shown, "settingsPages")->setCurrentRow(page);
        return shown;
    }
    void openProject() {
        windows.openProject(program.addVideo());
        ASSERT_TRUE(activate(*window("timelines")));
    }
    static void strike(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWindow(), key, modifiers);
    }
};

}  // namespace tembrix
