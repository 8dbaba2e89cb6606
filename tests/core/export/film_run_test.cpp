#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/export_project.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

struct FilmRun : testing::Test, RunningExport {};

TEST_F(FilmRun, RendersTheCutsAndSavesTheFilmWhereTheUserSays) {
    start(cuts::AllTimelines{});
    ASSERT_EQ(renderer.sessions.size(), 1U);
    EXPECT_EQ(session().job.pieces.size(), 3U);
    EXPECT_EQ(session().job.target.filename(), "Ball_Пас_video.mp4");
    EXPECT_EQ(helper->state(), ExportState::rendering);
    EXPECT_EQ(helper->progress.get(), 0);

    session().setProgress(0.5F);
    project.scheduler.advance(0.09);
    EXPECT_EQ(helper->progress.get(), 0);
    project.scheduler.advance(0.02);
    EXPECT_EQ(helper->progress.get(), 0.5F);
    session().setProgress(0.4F);
    project.scheduler.advance(0.1);
    EXPECT_EQ(helper->progress.get(), 0.5F) << "never goes back";

    succeed();
    EXPECT_EQ(helper->progress.get(), 1);
    EXPECT_TRUE(noTimerRuns());
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(helper->state(), ExportState::saving);
    ASSERT_EQ(project.panels.saves.size(), 1U);
    EXPECT_EQ(project.panels.saves[0].request.defaultName, "Ball_Пас_video.mp4");
    EXPECT_EQ(project.panels.saves[0].request.extension, "mp4");

    project.folder.write("saved/film.mp4", "an older and longer film");
    answerSave(saved / "film.mp4");
    EXPECT_TRUE(endedWell());
    EXPECT_EQ(fileText(saved / "film.mp4"), "film");
    EXPECT_THAT(leftovers(), IsEmpty());
    EXPECT_TRUE(project.log.has("fullControlExportFilmSuccess " + (saved / "film.mp4").string()));
}

TEST_F(FilmRun, ChecksComeInOrderAndEndWithTheirErrors) {
    project.texts.set("fullControlExportNoSegments", "nothing there");
    setStamps({}, {});
    start(std::nullopt);
    EXPECT_TRUE(endedWith("No export type selected"));
    start(cuts::AllTimelines{});
    EXPECT_TRUE(endedWith("nothing there"));
    project.player.cleanup();
    start(std::nullopt);
    EXPECT_TRUE(endedWith("Asset not found"));
    EXPECT_THAT(renderer.sessions, IsEmpty());
}

TEST_F(FilmRun, FailuresBearTheFilmsText) {
    project.texts.set("fullControlExportFilmError", "No film");
    setStamps({stamp("pass", "x", 0, 100)});
    start(cuts::AllTimelines{});
    EXPECT_TRUE(endedWith("No film: No valid segments to export"));

    setStamps({stamp("pass", "x", 1, 2)});
    renderer.startError = Error{"Export", 7, "no encoder"};
    start(cuts::AllTimelines{});
    EXPECT_TRUE(endedWith("No film: no encoder"));

    renderer.startError = Error{"Export", 2, ""};  // the reason is unknown
    start(cuts::AllTimelines{});
    EXPECT_TRUE(endedWith("No film: Unknown export error"));
    renderer.startError.reset();

    start(cuts::AllTimelines{});
    fail(0, {"file", ENOSPC, "write: No space left on device"});
    EXPECT_TRUE(endedWith("No film: exportErrorDiskFull"));
    EXPECT_THAT(project.panels.saves, IsEmpty());
    EXPECT_TRUE(noTimerRuns());

    media.add(source, MediaInfo{});  // without a picture
    start(cuts::AllTimelines{});
    EXPECT_TRUE(endedWith("No film: Video track not found"));

    fs::remove(source);
    start(cuts::AllTimelines{});
    EXPECT_TRUE(endedWith("No film: missing " + source.string()));
}

TEST_F(FilmRun, AFailedSaveKeepsTheFilmAndAsksUntilItSucceeds) {
    project.texts.set("fullControlExportFilmError", "Not exported");
    start(cuts::CurrentTimeline{});
    succeed();
    answerSave(saved / "no such folder" / "film.mp4");
    EXPECT_EQ(completions, 0);
    EXPECT_THAT(closeAlert(), testing::StartsWith("Not exported: exportSaveFolderMissing"));

    project.folder.write("saved/film.mp4/inside", "");  // the target is a folder
    answerSave(saved / "film.mp4");
    closeAlert();
    EXPECT_EQ(std::distance(fs::directory_iterator(saved), {}), 1) << "nothing half-written";
    EXPECT_THAT(leftovers(), testing::Contains("First_video.mp4"));

    answerSave(saved / "other.mp4");
    EXPECT_TRUE(endedWell());
    EXPECT_EQ(fileText(saved / "other.mp4"), "film");
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(FilmRun, ClosingThePanelKeepsTheTemporaryFile) {
    start(cuts::CurrentTimeline{});
    succeed();
    answerSave(std::nullopt);
    EXPECT_TRUE(endedWell());
    EXPECT_THAT(leftovers(), ElementsAre("First_video.mp4"));
}

TEST_F(FilmRun, TheFolderOfTheRunIsNoPlaceForItsFilm) {
    start(cuts::CurrentTimeline{});
    succeed();
    const auto folder = session().job.target.parent_path();
    answerSave(folder / "First_video.mp4");
    EXPECT_THAT(closeAlert(), testing::HasSubstr("exportSaveNotWritable"));
    answerSave(saved / "film.mp4");
    EXPECT_EQ(fileText(saved / "film.mp4"), "film");
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(FilmRun, AMissingFilmEndsTheRunWithAnError) {
    start(cuts::CurrentTimeline{});
    succeed();
    fs::remove(session().job.target);
    answerSave(saved / "film.mp4");
    EXPECT_TRUE(endedWith("fullControlExportFilmError: exportErrorProductMissing"));
}

TEST_F(FilmRun, RunsOfTwoWindowsDoNotDisturbEachOther) {
    ExportHelper other(services);
    int otherEnds = 0;
    start(cuts::AllTimelines{});
    other.startExport(cuts::AllTimelines{}, false, false,
                      [&](const std::optional<Error>& result) { otherEnds += !result; });
    project.scheduler.run();
    ASSERT_EQ(renderer.sessions.size(), 2U);
    EXPECT_EQ(session(0).job.target.filename(), session(1).job.target.filename());
    succeed(0);
    cancel();  // ends the first one, whose panel is open
    answerSave(std::nullopt);
    EXPECT_TRUE(endedWell());
    succeed(1);
    answerSave(saved / "film.mp4");
    EXPECT_EQ(otherEnds, 1);
    EXPECT_EQ(fileText(saved / "film.mp4"), "film");
}

TEST_F(FilmRun, CancelSaysNothingAtAnyStage) {
    // Canceled before the source is examined.
    helper->startExport(cuts::CurrentTimeline{}, false, false, [this](std::optional<Error> result) {
        ++completions;
        error = std::move(result);
    });
    cancel();
    EXPECT_TRUE(endedWell());
    EXPECT_THAT(renderer.sessions, IsEmpty());

    // Canceled while rendering.
    start(cuts::CurrentTimeline{});
    cancel();
    EXPECT_TRUE(session(0).canceled());
    EXPECT_TRUE(endedWell());
    EXPECT_TRUE(noTimerRuns());

    // Canceled after the session has ended.
    start(cuts::CurrentTimeline{});
    session(1).succeed();
    cancel();
    EXPECT_TRUE(endedWell());
    EXPECT_THAT(project.panels.saves, IsEmpty());
    EXPECT_THAT(leftovers(), IsEmpty());

    // The renderer ends the session by itself.
    start(cuts::CurrentTimeline{});
    session(2).cancel();
    project.scheduler.run();
    EXPECT_TRUE(endedWell());

    // Canceled while the panel is open, and while the film is copied: only the panel gives it up.
    start(cuts::CurrentTimeline{});
    succeed(3);
    cancel();
    EXPECT_EQ(completions, 0) << "the panel is still open";
    project.panels.answerSave(saved / "film.mp4");
    cancel();
    EXPECT_EQ(completions, 0);
    EXPECT_FALSE(fs::exists(saved / "film.mp4"));
    answerSave(std::nullopt);
    EXPECT_TRUE(endedWell());

    // A later run is not affected.
    start(cuts::CurrentTimeline{});
    succeed(4);
    answerSave(saved / "film.mp4");
    EXPECT_TRUE(endedWell());
    EXPECT_TRUE(fs::exists(saved / "film.mp4"));
    cancel();
    EXPECT_EQ(completions, 1);
}

TEST_F(FilmRun, ASecondRunIsRefusedAndDisturbsNothing) {
    start(cuts::CurrentTimeline{});
    int second = 0;
    helper->startExport(cuts::AllTimelines{}, true, false,
                        [&](const std::optional<Error>&) { ++second; });
    project.scheduler.run();
    EXPECT_EQ(second, 1);
    EXPECT_EQ(renderer.sessions.size(), 1U);
    EXPECT_EQ(completions, 0);
}

TEST_F(FilmRun, DestroyingTheHelperEndsItsRun) {
    start(cuts::CurrentTimeline{});
    helper.reset();
    EXPECT_TRUE(session().canceled());
    project.scheduler.run();
    EXPECT_EQ(completions, 0);
}

TEST_F(FilmRun, AFilmThatIsNotSavedWhenTheProgramEndsIsOfferedByTheNextStart) {
    start(cuts::CurrentTimeline{});
    succeed();
    project.core.products.leaveForNextStart();
    helper.reset();
    answerSave(std::nullopt);  // the panel is closed with its window
    UnsavedProducts next(project.panels, project.scheduler, project.texts, project.log,
                         project.library, project.core.settings);
    next.resume(temporary);
    project.scheduler.run();
    EXPECT_TRUE(*next.any);
    ASSERT_EQ(project.panels.saves.size(), 1U);
    EXPECT_EQ(project.panels.saves[0].request.window, "list");
    EXPECT_EQ(project.panels.saves[0].request.defaultName, "First_video.mp4");
    answerSave(source);
    EXPECT_THAT(closeAlert(), testing::HasSubstr("exportSaveOverVideo"));
    answerSave(std::nullopt);
    EXPECT_FALSE(*next.any);

    // Given up by the user, it is not offered again.
    UnsavedProducts last(project.panels, project.scheduler, project.texts, project.log,
                         project.library, project.core.settings);
    last.resume(temporary);
    project.scheduler.run();
    EXPECT_THAT(project.panels.saves, IsEmpty());
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(FilmRun, AFinishedFilmIsStillOfferedWhenItsWindowIsClosed) {
    const auto& any = project.core.products.any;
    helper = std::make_unique<ExportHelper>(services, "timelines");
    start(cuts::CurrentTimeline{});
    succeed();
    EXPECT_EQ(project.panels.saves[0].request.window, "timelines");
    EXPECT_TRUE(*any);
    helper.reset();
    project.scheduler.run();
    answerSave(std::nullopt);  // the panel is closed with its window
    ASSERT_EQ(project.panels.saves.size(), 1U);
    EXPECT_EQ(project.panels.saves[0].request.window, "list");
    EXPECT_TRUE(*any);
    answerSave(saved / "film.mp4");
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(fileText(saved / "film.mp4"), "film");
    EXPECT_TRUE(project.log.has("fullControlExportFilmSuccess " + (saved / "film.mp4").string()));
    EXPECT_FALSE(*any);
    EXPECT_THAT(leftovers(), IsEmpty());

    // The window is closed while the film is copied.
    helper = std::make_unique<ExportHelper>(services, "timelines");
    start(cuts::CurrentTimeline{});
    succeed(1);
    project.panels.answerSave(saved / "second.mp4");
    helper.reset();
    project.scheduler.run();
    EXPECT_EQ(fileText(saved / "second.mp4"), "film");
    EXPECT_THAT(project.panels.saves, IsEmpty());

    // The film is gone, which somebody has to be told.
    helper = std::make_unique<ExportHelper>(services, "timelines");
    start(cuts::CurrentTimeline{});
    succeed(2);
    helper.reset();
    project.scheduler.run();
    answerSave(std::nullopt);
    fs::remove(session(2).job.target);
    answerSave(saved / "third.mp4");
    EXPECT_TRUE(*any) << "the program does not end before the message is read";
    EXPECT_EQ(closeAlert(), "exportErrorProductMissing");
    EXPECT_FALSE(*any);
}

TEST_F(FilmRun, NoVideoOfTheLibraryIsReplacedByAFilm) {
    const auto other = project.folder.write("other.mp4", "another match");
    project.library.addVideoNamed(other, "Other");
    const auto before = fileText(source);
    start(cuts::CurrentTimeline{});
    succeed();
    fs::create_symlink(other, saved / "link.mp4");
    for (const auto& video : {source, other, saved / "link.mp4"}) {
        answerSave(video);
        EXPECT_EQ(completions, 0);
        EXPECT_THAT(closeAlert(), testing::HasSubstr("exportSaveOverVideo"));
    }
    EXPECT_EQ(fileText(source), before);
    EXPECT_EQ(fileText(other), "another match");
    project.folder.write("saved/older.mp4", "an older film");
    answerSave(saved / "older.mp4");
    EXPECT_TRUE(endedWell());
}

TEST_F(FilmRun, DrawingsComeByTheSwitchOrWithTheirTimeline) {
    auto marked = stamp("screenshot_1", "Plan", 10, 16);
    setStamps({marked});
    drawings.list = {{"Plan", 13, 2, {marked.id}}};
    drawings.place = project.folder.path();
    start(cuts::CurrentTimeline{});
    EXPECT_EQ(session(0).job.pieces.size(), 1U);
    cancel();
    start(cuts::CurrentTimeline{}, false, true);
    EXPECT_EQ(session(1).job.pieces.size(), 3U);
    cancel();
    auto drawn = line("Drawings", {marked});
    drawn.id = drawingsLineId();
    project.timeline.replaceLines({drawn});
    start(cuts::DrawingsTimeline{});
    EXPECT_EQ(session(2).job.pieces.size(), 3U);
    cancel();

    services.drawings = nullptr;  // without drawings there are no freeze frames
    start(cuts::DrawingsTimeline{}, false, true);
    EXPECT_EQ(session(3).job.pieces.size(), 1U);
}

}  // namespace
}  // namespace tembrix
