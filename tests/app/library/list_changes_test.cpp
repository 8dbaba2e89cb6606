// Adding matches to the list, deleting them and taking that back.
#include <QDateTimeEdit>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include "app/library/list_window.h"
#include "app/widgets/elided_label.h"

namespace tembrix {
namespace {

struct ListChanges : ListWindow {
    TimelineLine lineWith(Uuid id, int stamps) {
        TimelineLine line{id, "Line", {}, ""};
        for (int i = 0; i < stamps; ++i) {
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.timeStartSeconds = i;
            stamp.timeFinishSeconds = i + 1;
            line.stamps.push_back(stamp);
        }
        return line;
    }
    // Adds a match that has been opened, with marks.
    std::string addMarked(const std::string& name, int stamps, int drawings) {
        const std::string id = project.addVideo(name);
        project.storage.saveTimeline(
            {lineWith(drawingsLineId(), drawings), lineWith(Uuid::random(), stamps)}, id);
        project.library.noteOpening(id, Date{1700000000});
        return id;
    }
    void select(int row) {
        list()->setFocus();
        list()->setCurrentIndex(list()->model()->index(row, 0));
    }
    void confirmDeletion() {
        QTest::keyClick(view.windowHandle(), Qt::Key_Delete);
        ASSERT_TRUE(sheet());
        QTest::mouseClick(child(*sheet(), "deleteButtonTitle"), Qt::LeftButton);
        ASSERT_TRUE(backInList());
    }
    bool drop(const std::vector<std::filesystem::path>& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const auto& file : files)
            urls << QUrl::fromLocalFile(qtext(file.string()));
        data.setUrls(urls);
        QDragEnterEvent enter({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&view, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&view, &dropped);
        project.scheduler.run();
        return true;
    }
    void pick(const std::filesystem::path& file) {
        model.send(videos::OpenFiles{});
        project.panels.answerOpen({file});
    }
    QString shownName() { return child<ElidedLabel>(*sheet(), "matchSheetName")->fullText(); }
    QString textOf(const char* label) { return child<QLabel>(*sheet(), label)->text(); }
};

TEST_F(ListChanges, ADeletionNamesWhatIsLostAndIsTakenBackExactly) {
    project.texts.set("countOfTags", "{0} tag|{0} tags");
    project.texts.set("countOfDrawings", "{0} drawing|{0} drawings");
    project.texts.set("deleteVideoWithBoth", "{0}, {1}");
    project.texts.set("videoDeleted", "gone: {0}");
    project.addVideo("first.mp4");
    const auto id = addMarked("second.mp4", 20, 1);
    const auto third = addMarked("third.mp4", 3, 0);
    project.library.toggleFavorite(id);
    project.storage.flushNow();
    const auto videos = project.library.videosData();
    const auto marks = project.storage.loadTimeline(id);
    show();
    select(1);
    QTest::keyClick(view.windowHandle(), Qt::Key_Delete);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(textOf("deleteVideoMessage"), "20 tags, 1 drawing deleteVideoMessage");
    QTest::mouseClick(child(*sheet(), "deleteButtonTitle"), Qt::LeftButton);
    ASSERT_TRUE(backInList());
    EXPECT_EQ(currentName(), "third.mp4");
    confirmDeletion();
    ASSERT_EQ(list()->model()->rowCount(), 1);
    EXPECT_FALSE(std::filesystem::exists(project.storage.timelineFile(id)));

    const auto* bar = child(view, "deletionBar");
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->accessibleName(), "gone: third.mp4");
    EXPECT_EQ(unnamedControls(view), QStringList());
    picture(view, "list-deleted");
    QTest::keyClick(view.windowHandle(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(bar->accessibleName(), "gone: second.mp4");
    QTest::mouseClick(child(view, "undoDeletion"), Qt::LeftButton);
    EXPECT_FALSE(bar->isVisible());
    EXPECT_EQ(project.library.videosData(), videos);
    EXPECT_EQ(project.storage.loadTimeline(id), marks);
    EXPECT_EQ(project.library.lastOpening(id), Date{1700000000});
    EXPECT_EQ(project.library.countMarks(third), (MarkCounts{3, 0}));
    EXPECT_EQ(currentName(), "second.mp4");
    EXPECT_EQ(QApplication::focusWidget(), list());
    project.storage.flushNow();
    EXPECT_TRUE(std::filesystem::exists(project.storage.timelineFile(id)));
    EXPECT_FALSE(project.core.commands.isEnabled(Command::takeBackDeletion));
}

TEST_F(ListChanges, ADeletionIsNotTakenBackBesideANewEntryOfItsFile) {
    addMarked("match.mp4", 5, 0);
    show();
    select(0);
    confirmDeletion();
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return QApplication::focusWidget() == child(view, "addFirstVideo"); }));
    const auto again = project.addVideo("match.mp4");
    QTest::mouseClick(child(view, "undoDeletion"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(model.state->errorTitle, "videoNotTakenBack");
    EXPECT_EQ(project.library.videosData().size(), 1U);
    EXPECT_TRUE(project.library.findById(again));
    EXPECT_TRUE(model.state->deleted) << "it can be taken back when the new entry is gone";
}

TEST_F(ListChanges, ANewMatchIsSelectedAlsoWhenTheSearchHidIt) {
    for (int i = 0; i < 40; ++i)
        project.addVideo("old" + std::to_string(i) + ".mp4");
    show();
    child<QLineEdit>(view, "searchVideos")->setFocus();
    QTest::keyClicks(child(view, "searchVideos"), "old1");
    QTest::mouseClick(child(view, "videosFilterFavorites"), Qt::LeftButton);
    const auto file = project.folder.write("final.mp4", "bytes");
    project.media.add(file, 10);
    pick(file);
    ASSERT_TRUE(sheet());
    QTest::keyClicks(QApplication::focusWidget(), "Lions");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(backInList());
    EXPECT_EQ(list()->model()->rowCount(), 41);
    EXPECT_EQ(currentName(), "Lions");
    EXPECT_TRUE(list()->viewport()->rect().intersects(list()->visualRect(list()->currentIndex())));
    QTest::keyClick(view.windowHandle(), Qt::Key_Return);
    EXPECT_EQ(windows.currentVideoId(), project.library.files().back().videoData.id);
}

TEST_F(ListChanges, TheSheetShowsTheNameThatResults) {
    show();
    pick(project.folder.write("GOPR0042.MP4", "bytes"));
    ASSERT_TRUE(sheet());
    EXPECT_EQ(unnamedControls(*sheet()), QStringList());
    EXPECT_EQ(shownName(), "GOPR0042.MP4");
    EXPECT_EQ(textOf("matchSheetEmpty"), "matchSheetEmpty");
    auto* ownName = child<QAbstractButton>(*sheet(), "matchSheetUnderFileName");
    EXPECT_FALSE(ownName->isEnabled()) << "there is no other name yet";
    child(*sheet(), "videosViewFieldTeam2")->setFocus();
    QTest::keyClicks(QApplication::focusWidget(), "Blue Foxes");
    EXPECT_EQ(shownName(), "Blue Foxes");
    EXPECT_EQ(textOf("matchSheetEmpty"), "1 May 2024, 12:00");
    picture(*sheet(), "match-sheet");
    ownName->click();
    EXPECT_EQ(shownName(), "GOPR0042.MP4");
    ownName->click();
    QTest::keyClicks(child(*sheet(), "videosViewFieldTeam1"), "Red Lions");
    QTest::keyClicks(child(*sheet(), "videosViewFieldScore"), "2-1");
    QTest::keyClick(child(*sheet(), "videosViewFieldDateTime"), Qt::Key_Down, Qt::AltModifier);
    ASSERT_TRUE(QApplication::activePopupWidget()) << "the calendar";
    QApplication::activePopupWidget()->close();
    QTest::mouseClick(child(*sheet(), "saveButtonTitle"), Qt::LeftButton);
    ASSERT_TRUE(backInList());
    EXPECT_EQ(project.library.files().front().videoData.customName,
              "Red_Lions_Blue_Foxes_2-1_2024-05-01_12-00");
    EXPECT_EQ(nameOf(0), "Red Lions – Blue Foxes, 2-1");
    EXPECT_TRUE(list()
                    ->model()
                    ->index(0, 0)
                    .data(Qt::AccessibleTextRole)
                    .toString()
                    .startsWith("Red Lions – Blue Foxes, 2-1, 1 May 2024, 12:00"));
    child<QLineEdit>(view, "searchVideos")->setText("lions – blue");
    EXPECT_EQ(list()->model()->rowCount(), 1);

    // Nothing entered: the file keeps its own name.
    pick(project.folder.write("GOPR0043.MP4", "other bytes"));
    ASSERT_TRUE(sheet());
    QTest::mouseClick(child(*sheet(), "saveButtonTitle"), Qt::LeftButton);
    ASSERT_TRUE(backInList());
    EXPECT_EQ(project.library.files().back().videoData.customName, std::nullopt);
    EXPECT_EQ(currentName(), "GOPR0043.MP4");
}

TEST_F(ListChanges, AFileThatIsInTheListIsNotNamedAnew) {
    project.texts.set("videoIsInList", "known as {0}");
    project.addVideo("first.mp4");
    project.addVideo("second.mp4");
    show();
    select(0);
    pick(project.folder.path() / "second.mp4");
    ASSERT_TRUE(sheet());
    EXPECT_EQ(model.state->errorTitle, "known as second.mp4");
    QTest::keyClick(sheet(), Qt::Key_Return);
    ASSERT_TRUE(backInList());
    EXPECT_EQ(currentName(), "second.mp4");
    EXPECT_EQ(project.library.files().size(), 2U);
}

TEST_F(ListChanges, TheFocusGoesInReadingOrder) {
    addMarked("match.mp4", 1, 0);
    project.addVideo("other.mp4");
    show();
    select(1);
    confirmDeletion();
    child(view, "searchVideos")->setFocus();
    QStringList walked;
    QPoint last(-1, -1);
    const auto* first = QApplication::focusWidget();
    do {
        const QWidget* focus = QApplication::focusWidget();
        const QPoint place = focus->mapTo(&view, QPoint(0, focus->height() / 2));
        EXPECT_TRUE(place.y() > last.y() + 10 ||
                    (place.x() > last.x() && qAbs(place.y() - last.y()) <= 10))
            << qPrintable(walked.join(' ')) << " then " << qPrintable(focus->objectName());
        last = place;
        walked << focus->objectName();
        QTest::keyClick(view.windowHandle(), Qt::Key_Tab);
    } while (QApplication::focusWidget() != first && walked.size() < 20);
    EXPECT_EQ(walked.last(), "videosList");
    EXPECT_TRUE(walked.contains("undoDeletion"));
}

TEST_F(ListChanges, AGuideThatCannotBeOpenedIsSaidSo) {
    show();
    project.panels.nothingOpens = true;
    QTest::mouseClick(child(view, "openGuide"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(model.state->errorTitle, "guideNotOpened");
}

TEST_F(ListChanges, DroppedFilesAndFoldersAreAddedOneAfterTheOther) {
    project.addVideo("known.mp4");
    const auto video = project.folder.write("drop/one.mp4", "one");
    const auto text = project.folder.write("drop/notes.txt", "x");
    project.folder.write("drop/season/two.MOV", "two");
    project.folder.write("drop/season/spring/three.mkv", "three");
    project.folder.write("drop/season/.trash/four.mkv", "four");
    project.folder.write("drop/season/table.xls", "x");
    show();
    ASSERT_TRUE(drop(
        {video, text, project.folder.path() / "drop/season", project.folder.path() / "known.mp4"}));
    ASSERT_TRUE(sheet());
    EXPECT_EQ(model.state->errorTitle, "filesNotAdded");
    EXPECT_EQ(textOf("errorDetails"), "filesNoVideos notes.txt\nfilesInList known.mp4");
    picture(*sheet(), "list-not-added");
    QTest::keyClick(sheet(), Qt::Key_Return);
    QTest::qWait(0);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(shownName(), "one.mp4");
    EXPECT_EQ(model.state->waitingVideos, 2U);
    // More are dropped while the sheet is open.
    ASSERT_TRUE(drop({project.folder.write("drop/five.mp4", "five"), video}));
    QTest::mouseClick(child(*sheet(), "saveButtonTitle"), Qt::LeftButton);
    QTest::qWait(0);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(shownName(), "three.mkv");
    QTest::mouseClick(child(*sheet(), "matchSheetSkip"), Qt::LeftButton);
    QTest::qWait(0);
    ASSERT_TRUE(sheet());
    EXPECT_EQ(shownName(), "two.MOV");
    QTest::mouseClick(child(*sheet(), "matchSheetAddAll"), Qt::LeftButton);
    ASSERT_TRUE(backInList());
    QStringList names;
    for (int row = 0; row < list()->model()->rowCount(); ++row)
        names << nameOf(row);
    EXPECT_EQ(names, (QStringList{"known.mp4", "one.mp4", "two.MOV", "five.mp4"}));
    EXPECT_EQ(currentName(), "five.mp4");
}

}  // namespace
}  // namespace tembrix
