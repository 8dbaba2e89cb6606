#include "app/library/videos_view.h"

#include <QContextMenuEvent>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include "app/library/videos_list_model.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/segmented_switch.h"
#include "app/window_keys.h"
#include "app/window_tests.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

struct VideosViewTest : testing::Test {
    CoreProgram project;
    DataSyncManager& sync = project.core.dataSync;
    WindowsManager& windows = project.core.windows;
    VideosViewModel model{project.library,   project.core.previews, windows,        project.panels,
                          project.scheduler, project.texts,         project.locale, "/guides"};
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
    // The visible sheet, once it has the keyboard focus.
    static QWidget* sheet() {
        QWidget* top = QApplication::activeModalWidget();
        if (!top)
            return nullptr;
        top->activateWindow();
        return QTest::qWaitFor([&] { return QApplication::activeWindow() == top; }) ? top : nullptr;
    }
};

TEST_F(VideosViewTest, AVideoIsAddedByKeyboardAlone) {
    show();
    EXPECT_TRUE(child(view, "addVideoTitle.empty")->isVisible());
    child(view, "addVideoTitle.empty")->setFocus();
    QTest::keyClick(child(view, "addVideoTitle.empty"), Qt::Key_Space);
    project.panels.answerOpen({project.folder.write("final.mp4", "bytes")});
    ASSERT_TRUE(sheet());
    QTest::keyClicks(QApplication::focusWidget(), "Lions");
    EXPECT_TRUE(*project.focus.isAnyTextFieldFocused);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClicks(QApplication::focusWidget(), "Foxes");
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return list()->model()->rowCount() == 1; }));
    EXPECT_TRUE(list()->model()->index(0, 0).data().toString().startsWith("Lions_Foxes"));

    QTest::qWait(0);  // the sheet is deleted in the next turn of the event loop
    QTest::keyClick(list(), Qt::Key_Return);
    EXPECT_FALSE(windows.isClosing());
    EXPECT_EQ(unnamedControls(view), QStringList());
}

TEST_F(VideosViewTest, SearchAndFilterLeaveWhatMatchesAndSayWhenNothingDoes) {
    project.addVideo("alpha.mp4");
    const auto beta = project.addVideo("beta.mp4");
    project.library.toggleFavorite(beta);
    show();
    ASSERT_EQ(list()->model()->rowCount(), 2);
    QTest::keyClicks(child(view, "searchVideos"), "ALPH");
    EXPECT_EQ(list()->model()->rowCount(), 1);
    QTest::keyClicks(child(view, "searchVideos"), "x");
    EXPECT_FALSE(list()->isVisible());
    QTest::keyClick(child(view, "searchVideos"), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(child(view, "searchVideos"), Qt::Key_Delete);
    QTest::mouseClick(child(view, "videosFilterFavorites"), Qt::LeftButton);
    ASSERT_EQ(list()->model()->rowCount(), 1);
    EXPECT_EQ(list()->model()->index(0, 0).data().toString(), "beta.mp4");
}

TEST_F(VideosViewTest, AMovedVideoShowsItsMarkAndAsksForTheFile) {
    project.addVideo("gone.mp4");
    std::filesystem::remove(project.folder.path() / "gone.mp4");
    show();
    const auto note = [&] {
        return list()->model()->index(0, 0).data(VideosListModel::noteRole).toString();
    };
    EXPECT_EQ(note(), qtext(project.texts.text("videoUnavailable")));
    // The disk is connected and disconnected while another program is active.
    const auto back = project.folder.write("gone.mp4", "bytes");
    QEvent returned(QEvent::WindowActivate);
    QApplication::sendEvent(&view, &returned);
    EXPECT_EQ(note(), "");
    std::filesystem::remove(back);
    QApplication::sendEvent(&view, &returned);
    list()->setFocus();
    QTest::keyClick(list(), Qt::Key_Return);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(sheet()->objectName(), "videoUnavailable");
    QTest::keyClick(sheet(), Qt::Key_Return);
    project.panels.answerOpen({project.folder.write("found.mp4", "bytes")});
    EXPECT_FALSE(windows.isClosing());
}

TEST_F(VideosViewTest, TheMenuOfACardRenamesAndDeletes) {
    project.addVideo("raw.mp4");
    show();
    list()->setFocus();
    QTest::keyClick(view.windowHandle(), Qt::Key_F2);
    ASSERT_TRUE(sheet());
    QTest::keyClicks(QApplication::focusWidget(), "Derby");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return list()->model()->index(0, 0).data().toString() == "Derby"; }));

    // A name of blanks is no name, so the file name is shown.
    QTest::qWait(0);
    ASSERT_FALSE(sheet());
    QTest::keyClick(view.windowHandle(), Qt::Key_F2);
    ASSERT_TRUE(sheet());
    QTest::keyClicks(QApplication::focusWidget(), "   ");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(list()->model()->index(0, 0).data(), "raw.mp4");

    QTest::qWait(0);
    ASSERT_FALSE(sheet());
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(list(), &menuKey);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    QStringList entries;
    for (const QAction* action : menu->actions()) {
        if (!action->isSeparator())
            entries << action->objectName();
    }
    EXPECT_EQ(entries, (QStringList{"commandOpenVideo", "rebindVideo", "addToFavorites",
                                    "renameButtonTitle", "deleteButtonTitle"}));
    menu->actions().back()->trigger();
    menu->close();
    EXPECT_TRUE(project.library.files().empty());
}

TEST_F(VideosViewTest, TheDataSheetBacksUpAndSaysSo) {
    show();
    QTest::mouseClick(child(view, "dataManagementTitle"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    QTest::mouseClick(child(*sheet(), "dataManagementCreateBackup"), Qt::LeftButton);
    EXPECT_FALSE(child(*sheet(), "dataManagementCreateBackup")->isVisible());
    project.scheduler.run();
    EXPECT_TRUE(project.log.contains("Backup created successfully"));
    EXPECT_TRUE(child(*sheet(), "dataManagementCreateBackup")->isVisible());
    picture(*sheet(), "data-sheet");
}

TEST_F(VideosViewTest, WhatARestoreReplacedIsListedAndBroughtBack) {
    project.addVideo("one.mp4");
    EXPECT_TRUE(sync.backUpNow());
    project.library.renameVideo(project.library.files().front(), "Later");
    EXPECT_TRUE(sync.replacedStates().empty());
    EXPECT_TRUE(sync.restoreFromBackup());
    show();
    QTest::mouseClick(child(view, "dataManagementTitle"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    EXPECT_NE(project.library.files().front().videoData.customName, "Later");
    picture(*sheet(), "data-sheet-states");
    QTest::mouseClick(child(*sheet(), "dataManagementBringBack.0"), Qt::LeftButton);
    project.scheduler.run();
    EXPECT_EQ(project.library.files().front().videoData.customName, "Later");
    EXPECT_TRUE(child(*sheet(), "dataManagementBringBack.1")->isVisible());
}

TEST_F(VideosViewTest, ARepairIsSaidAboveTheListUntilItIsDismissed) {
    show();
    auto* notices = child(view, "safetyNotices");
    EXPECT_FALSE(notices->isVisible());
    EXPECT_FALSE(sync.savedTimeline("of no video"));
    project.scheduler.run();
    EXPECT_TRUE(notices->isVisible());
    EXPECT_FALSE(notices->accessibleName().isEmpty());
    QTest::mouseClick(child(view, "safetyDismiss"), Qt::LeftButton);
    EXPECT_FALSE(notices->isVisible());
}

}  // namespace
}  // namespace tembrix
