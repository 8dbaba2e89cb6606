#include <QContextMenuEvent>
#include <QMenu>
#include <QPushButton>
#include <gtest/gtest.h>

#include "app/library/list_window.h"
#include "app/widgets/segmented_switch.h"

namespace tembrix {
namespace {

using VideosViewTest = ListWindow;

TEST_F(VideosViewTest, AVideoIsAddedByKeyboardAlone) {
    show();
    ASSERT_EQ(QApplication::focusWidget(), child(view, "addFirstVideo"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    project.panels.answerOpen({project.folder.write("final.mp4", "bytes")});
    ASSERT_TRUE(sheet());
    QTest::keyClicks(QApplication::focusWidget(), "Lions");
    EXPECT_TRUE(*project.focus.isAnyTextFieldFocused);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClicks(QApplication::focusWidget(), "Foxes");
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return list()->model()->rowCount() == 1; }));
    EXPECT_EQ(nameOf(0), "Lions – Foxes");

    ASSERT_TRUE(backInList());
    QTest::keyClick(view.windowHandle(), Qt::Key_Return);
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
    EXPECT_FALSE(child(view, "addFirstVideo")->isVisible());
    QTest::mouseClick(child(view, "commandClearSearch"), Qt::LeftButton);
    EXPECT_EQ(list()->model()->rowCount(), 2);
    EXPECT_EQ(QApplication::focusWidget(), list());
    QTest::keyClicks(child(view, "searchVideos"), "beta");
    QTest::keyClick(child(view, "searchVideos"), Qt::Key_Down);
    EXPECT_EQ(QApplication::focusWidget(), list());
    QTest::keyClick(list(), Qt::Key_Escape);
    EXPECT_EQ(list()->model()->rowCount(), 2);
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
    ASSERT_TRUE(sheet());
    EXPECT_EQ(sheet()->objectName(), "deleteVideoTitle");
    EXPECT_FALSE(project.library.files().empty()) << "nothing is deleted before the answer";
    QTest::mouseClick(child(*sheet(), "deleteButtonTitle"), Qt::LeftButton);
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
    sync.noteIncidents({true, true, true});
    project.scheduler.run();
    for (const char* text :
         {"safetyDatabaseReplaced", "safetyUnsavedUnreadable", "safetyLaterChangesUsed"})
        EXPECT_TRUE(notices->accessibleName().contains(QString::fromLatin1(text))) << text;
}

}  // namespace
}  // namespace tembrix
