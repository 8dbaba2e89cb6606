#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QToolButton>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/export/export_window.h"
#include "fakes/export_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ExportFlow : testing::Test, ExportWindow {
    QToolButton* button = exports->makeMenuButton(&window);

    void choose(const char* entry) { child<QAction>(*button, entry)->trigger(); }
    // Chooses a film in the open sheet and returns the number of its pieces.
    std::size_t cutsOfTheFilm() {
        EXPECT_EQ(title(), "exportAs");
        press("exportModeFilm");
        project.scheduler.run();
        const auto count = session(project.renderer.sessions.size() - 1).job.pieces.size();
        session(project.renderer.sessions.size() - 1).cancel();
        project.scheduler.run();
        return count;
    }
};

TEST_F(ExportFlow, TheMenuOffersItsSixWaysInOrder) {
    QStringList entries;
    for (const auto* action : button->menu()->actions())
        entries << action->objectName();
    EXPECT_EQ(entries,
              QStringList({"fullControlButtonExportTimeline", "fullControlButtonExportAll",
                           "fullControlButtonExportDrawings", "fullControlButtonExportTags",
                           "fullControlButtonExportLabels", "fullControlButtonExportEvents"}));
    picture(*button->menu(), "export-menu");
}

TEST_F(ExportFlow, EveryWayLeadsThroughItsSheetsToTheRun) {
    choose("fullControlButtonExportTimeline");
    picture(*sheet(), "export-mode");
    EXPECT_EQ(cutsOfTheFilm(), 2U);
    choose("fullControlButtonExportAll");
    EXPECT_EQ(cutsOfTheFilm(), 3U);

    choose("fullControlButtonExportTags");
    EXPECT_EQ(rowTexts(), QStringList({"Shot", "Пас"}));
    clickRow(1);
    EXPECT_EQ(cutsOfTheFilm(), 2U);

    choose("fullControlButtonExportTags");
    clickRow(1, 1);
    EXPECT_EQ(title(), "selectLabelsForExport");
    EXPECT_EQ(rowTexts(), QStringList({"Длинный", "Точный"}));
    clickRow(1);
    press("done");
    EXPECT_EQ(cutsOfTheFilm(), 1U);
    choose("fullControlButtonExportTags");
    clickRow(1, 1);
    press("skip");
    EXPECT_EQ(cutsOfTheFilm(), 2U);

    choose("fullControlButtonExportLabels");
    EXPECT_EQ(title(), "selectLabelForExport");
    clickRow(0);
    EXPECT_EQ(title(), "selectTagsForExport");
    clickRow(0);
    press("done");
    EXPECT_EQ(cutsOfTheFilm(), 2U);
    choose("fullControlButtonExportLabels");
    clickRow(1);
    press("skip");
    EXPECT_EQ(cutsOfTheFilm(), 1U);
    choose("fullControlButtonExportLabels");
    press("skip");
    EXPECT_EQ(title(), "none");

    choose("fullControlButtonExportEvents");
    clickRow(0);
    EXPECT_EQ(cutsOfTheFilm(), 1U);
    EXPECT_THAT(project.panels.alerts, IsEmpty());
}

TEST_F(ExportFlow, AFilmIsMadeByKeyboardAlone) {
    button->setFocus();
    choose("fullControlButtonExportTimeline");
    ASSERT_EQ(title(), "exportAs");
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "exportModeFilm");
    key(Qt::Key_Return);
    EXPECT_EQ(title(), "none");
    project.scheduler.run();
    session().succeed();
    project.scheduler.run();
    project.panels.answerSave(project.folder.path() / "film.mp4");
    project.scheduler.run();
    EXPECT_EQ(fileText(project.folder.path() / "film.mp4"), "film");
    EXPECT_FALSE(exports->isExporting());
}

TEST_F(ExportFlow, ReturnChoosesTheFocusedMode) {
    choose("fullControlButtonExportTimeline");
    ASSERT_EQ(title(), "exportAs");
    key(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "exportModePlaylist");
    key(Qt::Key_Return);
    project.scheduler.run();
    EXPECT_EQ(project.renderer.sessions.size(), 2U) << "a clip for each cut";
}

TEST_F(ExportFlow, ASavedFilmCanBePlayedAndShownInItsFolder) {
    const auto* bar = child(window, "savedProduct");
    EXPECT_FALSE(bar->isVisible());
    const auto film = project.folder.path() / "film.mp4";
    choose("fullControlButtonExportAll");
    press("exportModeFilm");
    project.scheduler.run();
    session().succeed();
    project.scheduler.run();
    project.panels.answerSave(film);
    project.scheduler.run();
    ASSERT_TRUE(bar->isVisible());
    EXPECT_TRUE(window.rect().contains(bar->geometry()));
    EXPECT_EQ(unnamedControls(window), QStringList());
    picture(window, "export-saved");
    QTest::mouseClick(child(window, "savedProductPlay"), Qt::LeftButton);
    QTest::mouseClick(child(window, "savedProductFolder"), Qt::LeftButton);
    EXPECT_THAT(project.panels.browsed, ElementsAre("file://" + film.string()));
    EXPECT_THAT(project.panels.revealed, ElementsAre(project.folder.path()));
    EXPECT_EQ(bar->accessibleName(), "savedProduct");

    project.panels.nothingOpens = true;
    QTest::mouseClick(child(window, "savedProductPlay"), Qt::LeftButton);
    EXPECT_EQ(bar->accessibleName(), "savedProductPlayFailed");
    std::filesystem::remove(film);
    QTest::mouseClick(child(window, "savedProductPlay"), Qt::LeftButton);
    EXPECT_EQ(bar->accessibleName(), "savedProductGone");
    EXPECT_EQ(project.panels.browsed.size(), 2U);
    QTest::mouseClick(child(window, "savedProductHide"), Qt::LeftButton);
    EXPECT_FALSE(bar->isVisible());
}

TEST_F(ExportFlow, TheArrowDownOpensTheMenu) {
    button->setFocus();
    QTimer::singleShot(0, button, [this] {
        EXPECT_TRUE(button->menu()->isVisible());
        button->menu()->close();
    });
    QTest::keyClick(button, Qt::Key_Down);
    EXPECT_FALSE(button->menu()->isVisible());
}

TEST_F(ExportFlow, AWaitingPanelShowsProgressAndCancels) {
    project.texts.set("exportCutsDone", "{0} of {1}");
    project.texts.set("exportSecondsLeft", "{0} s");
    const auto text = [&](const char* label) { return child<QLabel>(window, label)->text(); };
    EXPECT_FALSE(waiting()->isVisible());
    choose("fullControlButtonExportAll");
    press("exportModeFilm");
    EXPECT_TRUE(exports->isExporting());
    EXPECT_FALSE(button->isEnabled());
    EXPECT_TRUE(waiting()->isVisible());
    project.scheduler.run();
    session().setProgress(0.625F);
    project.scheduler.advance(0.11);
    EXPECT_EQ(child(window, "exportProgress")->accessibleDescription(), "63 %");
    EXPECT_EQ(text("exportStep"), "1 of 3");
    EXPECT_EQ(text("exportLeft"), "") << "too early to tell";
    project.scheduler.advance(20);
    session().setProgress(0.8F);
    project.scheduler.advance(0.11);
    EXPECT_EQ(text("exportStep"), "2 of 3");
    EXPECT_EQ(text("exportLeft"), "10 s");
    EXPECT_EQ(child(window, "exportProgress")->size(), QSize(80, 80));
    QTest::qWait(300);
    picture(window, "export-waiting");
    const auto middle = [&] { return waiting()->geometry().center() - window.rect().center(); };
    EXPECT_LE(middle().manhattanLength(), 2);
    window.resize(900, 700);
    QTest::qWait(50);
    EXPECT_LE(middle().manhattanLength(), 2);

    QTest::mouseClick(child<QPushButton>(window, "cancelButtonTitle"), Qt::LeftButton);
    EXPECT_TRUE(exports->isExporting()) << "the run says when it is over";
    project.scheduler.run();
    EXPECT_FALSE(exports->isExporting());
    EXPECT_TRUE(button->isEnabled());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !waiting()->isVisible(); }));
    EXPECT_THAT(project.panels.alerts, IsEmpty());
}

TEST_F(ExportFlow, AFailureIsReportedOnce) {
    project.timeline.replaceLines({});
    choose("fullControlButtonExportAll");
    press("exportModePlaylist");
    project.scheduler.run();
    ASSERT_EQ(project.panels.alerts.size(), 1U);
    EXPECT_EQ(project.panels.closeAlert().message,
              project.texts.text("fullControlExportNoSegments"));
    EXPECT_FALSE(exports->isExporting());
}

TEST_F(ExportFlow, TheDrawingsSwitchIsRememberedAndReachesTheRun) {
    FakeExportDrawings drawings;
    const auto id = (*project.timeline.lines)[1]->stamps[0]->id;
    drawings.list = {{"Plan", 12, 2, {id}}};
    drawings.place = project.folder.path();
    project.exports.drawings = &drawings;
    choose("fullControlButtonExportTimeline");
    child<QCheckBox>(*sheet(), "exportWithDrawings")->click();
    key(Qt::Key_Escape);
    choose("fullControlButtonExportTimeline");
    EXPECT_TRUE(child<QCheckBox>(*sheet(), "exportWithDrawings")->isChecked());
    EXPECT_EQ(cutsOfTheFilm(), 4U);  // the still picture splits one cut
}

TEST_F(ExportFlow, KeysTypedIntoASheetAreNoHotKeys) {
    choose("fullControlButtonExportTags");
    EXPECT_TRUE(project.hotkeys.blockedSheetActive.get());
    clickRow(1, 1);
    EXPECT_TRUE(project.hotkeys.blockedSheetActive.get());
    press("skip");
    EXPECT_TRUE(project.hotkeys.blockedSheetActive.get());
    key(Qt::Key_Escape);
    EXPECT_EQ(title(), "none");
    EXPECT_FALSE(project.hotkeys.blockedSheetActive.get());
}

TEST_F(ExportFlow, ClosingTheWindowEndsTheRun) {
    choose("fullControlButtonExportAll");
    press("exportModeFilm");
    project.scheduler.run();
    delete exports;
    EXPECT_TRUE(session().canceled());
    project.scheduler.run();
    EXPECT_THAT(project.panels.saves, IsEmpty());
}

}  // namespace
}  // namespace tembrix
