#pragma once

#include <QApplication>
#include <QListView>
#include <QTest>
#include <gtest/gtest.h>

#include "app/library/videos_list_model.h"
#include "app/library/videos_view.h"
#include "app/widgets/qt_text.h"
#include "app/window_keys.h"
#include "app/window_tests.h"
#include "fakes/core_project.h"

namespace tembrix {

// The list window with its commands and keys.
struct ListWindow : testing::Test {
    CoreProgram project;
    DataSyncManager& sync = project.core.dataSync;
    WindowsManager& windows = project.core.windows;
    VideosViewModel model{
        project.library,   project.core.previews, windows,        project.panels,
        project.scheduler, project.texts,         project.locale, [] { return "/guides/en.html"; }};
    VideosView view{model,
                    {project.texts, project.locale, project.focus, project.core.commands,
                     project.panels, project.scheduler},
                    sync};

    WindowKeys keys{project.core.commands, project.focus, project.texts};

    void show() {
        WindowKeys::giveMenus(view, project.core.commands, project.texts, CommandScope::list);
        view.resize(1000, 640);
        view.show();
        view.activateWindow();  // without a window manager, no window is activated automatically
        ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    }
    QListView* list() { return child<QListView>(view, "videosList"); }
    QString nameOf(int row) { return list()->model()->index(row, 0).data().toString(); }
    QString currentName() { return list()->currentIndex().data().toString(); }
    // The visible sheet, once it has the keyboard focus.
    static QWidget* sheet() {
        QWidget* top = QApplication::activeModalWidget();
        if (!top)
            return nullptr;
        top->activateWindow();
        return QTest::qWaitFor([&] { return QApplication::activeWindow() == top; }) ? top : nullptr;
    }
    // Waits until the closed sheet is gone and the list is active again.
    bool backInList() {
        QTest::qWait(0);
        return !QApplication::activeModalWidget() && activate(view);
    }
};

}  // namespace tembrix
