#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/export_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ClipRun : testing::Test, RunningExport {
    void startClips() { start(cuts::AllTimelines{}, true); }
    void succeedAll() {
        for (std::size_t i = 0; i < renderer.sessions.size(); ++i)
            succeed(i);
    }
};

const std::vector<std::string> clipNames{"First_Ball_Пас(Длинный)_2.mp4", "First_Goal_Shot_3.mp4",
                                         "Second_Ball_Пас_1.mp4"};

TEST_F(ClipRun, RendersTwoAtATimeAndPacksThemInTheirOrder) {
    startClips();
    ASSERT_EQ(renderer.sessions.size(), 2U);
    succeed(1);  // ends before the first
    ASSERT_EQ(renderer.sessions.size(), 3U);
    EXPECT_EQ(helper->processedSegments(), 1);
    EXPECT_FLOAT_EQ(helper->progress.get(), 1.0F / 3);
    succeed(2);
    EXPECT_THAT(processes.calls(), IsEmpty());
    succeed(0);
    EXPECT_EQ(helper->progress.get(), 1);

    ASSERT_EQ(processes.calls().size(), 1U);
    const auto call = processes.calls()[0];
    EXPECT_EQ(call.program, "/usr/bin/zip");
    const auto folder = session().job.target.parent_path();
    EXPECT_THAT(call.arguments,
                ElementsAre("-j", (folder / "export_playlist.zip").string(),
                            (folder / clipNames[2]).string(), (folder / clipNames[0]).string(),
                            (folder / clipNames[1]).string()));
    EXPECT_THAT(leftovers(), ElementsAre(".unsaved", "export_playlist.zip"));
    ASSERT_EQ(project.panels.saves.size(), 1U);
    EXPECT_EQ(project.panels.saves[0].request.defaultName, "export_playlist.zip");
    EXPECT_EQ(project.panels.saves[0].request.extension, "zip");
    answerSave(saved / "clips.zip");
    EXPECT_TRUE(endedWell());
    EXPECT_EQ(fileText(saved / "clips.zip"), "archive");
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(ClipRun, AFailedClipStopsNoOtherAndTheLastErrorIsReported) {
    startClips();
    fail(0, {"Export", 5, "first"});
    fail(2, {"Export", 5, "last"});
    EXPECT_EQ(completions, 0);
    succeed(1);
    EXPECT_TRUE(endedWith("Ошибка сохранения плейлиста: last"));
    EXPECT_EQ(helper->processedSegments(), 3);
    EXPECT_THAT(processes.calls(), IsEmpty());
    EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(ClipRun, SessionsThatCannotBeMadeEndTheRunToo) {
    renderer.startError = Error{"Export", 2, ""};
    startClips();
    EXPECT_TRUE(endedWith("Ошибка сохранения плейлиста: Unknown export error"));
}

TEST_F(ClipRun, NothingButWholeVideosIsAnError) {
    setStamps({stamp("pass", "x", 0, 100)});
    startClips();
    EXPECT_TRUE(endedWith("Ошибка сохранения плейлиста: No valid segments were exported"));
}

TEST_F(ClipRun, CancelStartsNoMoreClipsAndKeepsTheFinishedOnes) {
    setStamps({stamp("pass", "a", 1, 2), stamp("pass", "b", 3, 4), stamp("pass", "c", 5, 6),
               stamp("pass", "d", 7, 8)});
    startClips();
    succeed(0);
    cancel();
    EXPECT_TRUE(endedWell());
    EXPECT_EQ(renderer.sessions.size(), 3U);
    EXPECT_TRUE(session(1).canceled() && session(2).canceled());
    EXPECT_THAT(leftovers(), ElementsAre("First_Ball_a_1.mp4"));
    EXPECT_THAT(processes.calls(), IsEmpty());

    // During the packing.
    startClips();
    for (std::size_t i = 3; i < 6; ++i)
        succeed(i);
    session(6).succeed();
    project.scheduler.step();  // the completion
    project.scheduler.step();  // its arrival on the main thread
    cancel();
    EXPECT_TRUE(endedWell());
    EXPECT_THAT(project.panels.saves, IsEmpty());
    EXPECT_THAT(leftovers(), testing::Not(testing::Contains("export_playlist.zip")));
}

TEST_F(ClipRun, AFailureOfTheZipProgramIsReported) {
    const auto runWith = [&](Result<ProcessOutcome> outcome) {
        processes.behavior = [outcome](const FakeProcessRunner::Call& call) {
            std::ofstream(call.arguments[1]) << "half an arch";
            return outcome;
        };
        const auto from = renderer.sessions.size();
        startClips();
        for (auto i = from; i < from + 3; ++i)
            succeed(i);
        EXPECT_THAT(leftovers(), IsEmpty());
    };
    const std::string prefix = "Ошибка сохранения плейлиста: ";
    runWith(ProcessOutcome{14, "zip error: disk full"});
    EXPECT_TRUE(endedWith(prefix + "zip error: disk full"));
    runWith(ProcessOutcome{14, "\xFF\xFE"});
    EXPECT_TRUE(endedWith(prefix + "unknownError"));
    runWith(ProcessOutcome{15, ""});
    EXPECT_TRUE(endedWith(prefix + "unknownError"));
    runWith(Error{"process", 1, "no such program"});
    EXPECT_TRUE(endedWith(prefix + "no such program"));
}

TEST_F(ClipRun, AFailedCopyOfTheArchiveAsksAgain) {
    startClips();
    succeedAll();
    succeed(2);
    answerSave(saved / "gone" / "clips.zip");
    EXPECT_THAT(closeAlert(), testing::StartsWith("Ошибка сохранения плейлиста: "));
    answerSave(saved / "clips.zip");
    EXPECT_TRUE(endedWell());
    EXPECT_EQ(fileText(saved / "clips.zip"), "archive");
}

TEST_F(ClipRun, ACutShorterThanHalfAFrameDoesNotFailTheArchive) {
    setStamps({stamp("pass", "a", 1, 2), stamp("pass", "b", 3, 3.01), stamp("pass", "c", 5, 6)});
    startClips();
    succeedAll();
    ASSERT_EQ(processes.calls().size(), 1U);
    EXPECT_EQ(processes.calls()[0].arguments.size(), 4U);
    answerSave(saved / "clips.zip");
    EXPECT_TRUE(endedWell());
}

}  // namespace
}  // namespace tembrix
