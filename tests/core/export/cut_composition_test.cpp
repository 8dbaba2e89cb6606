#include "core/export/cut_composition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/export/cut_planning.h"
#include "fakes/captured_log.h"
#include "fakes/export_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct CutComposition : testing::Test, MatchRecords {
    FakePictureRenderer pictures;
    FakeTextMeasure measure;
    FakeExportDrawings drawings;
    FakeTexts texts;
    CapturedLog log;
    ComposingTools tools{pictures, measure, &drawings, texts, log};
    ExportSnapshot snapshot;

    CutComposition() {
        snapshot.library = library;
        snapshot.timeEvents = library.timeEvents;
        snapshot.info.duration = 100;
        snapshot.info.size = {1921, 1079};
        snapshot.info.hasVideo = true;
        snapshot.folder = "/tmp/export";
        snapshot.source = "/video.mp4";
        snapshot.drawingsFolder = "/drawings";
    }

    void setCuts(const std::vector<TimelineStamp>& stamps) {
        snapshot.lines = {line("L", stamps)};
        const CutsExportType type = cuts::AllTimelines{};
        snapshot.plan = planExport(
            type, ExportMode::film, false,
            getSegmentsForExport(type, {snapshot.lines, {}, library, 100}, log), library, texts);
    }
    ExportSegment& firstCut() { return snapshot.plan.cuts.at(0).segment; }
    void addDrawing(const std::string& name, double time, double duration) {
        snapshot.drawings.push_back({name, time, duration, {firstCut().stamp.id}});
    }

    // "10+5" for a piece of the source, "still 3" for a still picture.
    static std::vector<std::string> pieces(const MovieJob& job) {
        std::vector<std::string> result;
        const auto number = [](double value) {
            auto text = logNumber(std::round(value * 1000) / 1000);
            return text.ends_with(".0") ? text.substr(0, text.size() - 2) : text;
        };
        for (const auto& piece : job.pieces)
            if (const auto* part = std::get_if<SourcePiece>(&piece))
                result.push_back(number(part->start) + "+" + number(part->duration));
            else
                result.push_back("still " + number(std::get<StillPiece>(piece).duration));
        return result;
    }
};

TEST_F(CutComposition, AFilmLaysCutsInARowWithTheirOverlays) {
    setCuts({stamp("pass", "x", 10, 15), stamp("gone", "x", 20, 21), stamp("shot", "x", 12, 14),
             stamp("x", "too short for a tick", 50, 50.001)});
    const auto job = composeFilm(snapshot, tools);
    ASSERT_TRUE(job);
    EXPECT_THAT(pieces(*job), ElementsAre("10+5", "12+2", "20+1"));
    EXPECT_EQ(job->renderSize, (Size{1920, 1078}));
    EXPECT_EQ(job->framesPerSecond, 30);
    EXPECT_EQ(job->source, "/video.mp4");
    EXPECT_EQ(job->target.parent_path(), "/tmp/export");

    ASSERT_EQ(job->overlays.size(), 2U);  // a stamp without a tag has none
    EXPECT_EQ(job->overlays[1].start, 5);
    EXPECT_EQ(job->overlays[1].duration, 2);
    EXPECT_THAT(pictures.lists(), IsEmpty()) << "pictures are painted when they show";
    const auto bar = job->overlays[1].paint();
    EXPECT_EQ(bar.width, 1920);
    EXPECT_EQ(job->overlays[1].y + bar.height, 1078);
    const auto painted = pictures.lists();
    EXPECT_EQ(std::get<DrawText>(painted.at(0).items.at(1)).text.runs[0].text, "GOAL: Shot_1");
}

TEST_F(CutComposition, WholeVideosAreSkippedByBothRuns) {
    setCuts({stamp("pass", "x", 0.05, 99.5), stamp("pass", "x", 0.1, 99.5)});
    EXPECT_THAT(pieces(*composeFilm(snapshot, tools)), ElementsAre("0.1+99.4"));
    EXPECT_TRUE(
        log.has("Пропущен сегмент, который равен всему видео: start=0.05, "
                "duration=99.45, videoDuration=100.0"));
    const auto clips = composeClips(snapshot, tools);
    ASSERT_EQ(clips->size(), 1U);
    EXPECT_TRUE(clips->front().target.string().ends_with("_2.mp4")) << "its place in the plan";
    EXPECT_TRUE(
        log.has("Пропущен сегмент в плейлисте, который равен всему видео: start=0.05, "
                "duration=99.45, videoDuration=100.0"));

    setCuts({stamp("pass", "x", 0, 100)});
    snapshot.plan.skipsWholeVideo = false;
    EXPECT_THAT(pieces(*composeFilm(snapshot, tools)), ElementsAre("0+100"));
    EXPECT_EQ(composeClips(snapshot, tools)->size(), 1U);
    snapshot.plan.skipsWholeVideo = true;
    EXPECT_EQ(composeFilm(snapshot, tools).error(),
              (Error{"Export", -2, "No valid segments to export"}));
    EXPECT_THAT(*composeClips(snapshot, tools), IsEmpty());
}

TEST_F(CutComposition, CutsShorterThanHalfAFrameGiveNoClipAndNoFilm) {
    setCuts({stamp("pass", "x", 10, 10.016), stamp("pass", "x", 20, 20.017)});
    const auto clips = composeClips(snapshot, tools);
    ASSERT_EQ(clips->size(), 1U);
    EXPECT_TRUE(clips->front().target.string().ends_with("_2.mp4"));
    EXPECT_TRUE(log.has("Пропущен сегмент в плейлисте короче кадра: duration=0.015"));
    EXPECT_THAT(pieces(*composeFilm(snapshot, tools)), ElementsAre("10+0.015", "20+0.017"));
    setCuts({stamp("pass", "x", 10, 10.016)});
    EXPECT_EQ(composeFilm(snapshot, tools).error().code, -2);
}

TEST_F(CutComposition, SourcesWithoutAPictureAndEmptyListsAreErrors) {
    const Error empty{"Export", -1, "No segments to export"};
    EXPECT_EQ(composeFilm(snapshot, tools).error(), empty);
    EXPECT_EQ(composeClips(snapshot, tools).error(), empty);
    setCuts({stamp("pass", "x", 1, 2)});
    snapshot.info.hasVideo = false;
    const Error noVideo{"Export", 0, "Video track not found"};
    EXPECT_EQ(composeFilm(snapshot, tools).error(), noVideo);
    EXPECT_EQ(composeClips(snapshot, tools).error(), noVideo);
}

TEST_F(CutComposition, AClipShowsItsOverlayThroughout) {
    setCuts({stamp("pass", "x", 10, 15), stamp("gone", "x", 20, 21)});
    const auto clips = *composeClips(snapshot, tools);
    ASSERT_EQ(clips.size(), 2U);
    EXPECT_THAT(pieces(clips[0]), ElementsAre("10+5"));
    ASSERT_EQ(clips[0].overlays.size(), 1U);
    EXPECT_EQ(clips[0].overlays[0].start, 0);
    EXPECT_EQ(clips[0].overlays[0].duration, 5);
    EXPECT_THAT(clips[1].overlays, IsEmpty());

    snapshot.lines.clear();  // the stamp was deleted: clips have an empty bar, films have none
    const auto bare = *composeClips(snapshot, tools);
    EXPECT_EQ(bare[0].overlays.at(0).paint().height, 24);
    EXPECT_THAT(composeFilm(snapshot, tools)->overlays, IsEmpty());
}

TEST_F(CutComposition, DrawingsBelongToACutByTimeAndStamp) {
    setCuts({stamp("pass", "x", 10, 20)});
    for (const auto& [name, time] : std::vector<std::pair<std::string, double>>{
             {"end", 20}, {"start", 10}, {"before", 9.99}, {"after", 20.01}, {"mid", 15}})
        addDrawing(name, time, 3);
    snapshot.drawings.push_back({"other stamp's", 15, 3, {Uuid::random()}});
    const auto names = [&] {
        std::vector<std::string> result;
        for (const auto& drawing : screenshotsForSegment(firstCut(), snapshot.drawings))
            result.push_back(drawing.screenshotName);
        return result;
    };
    EXPECT_THAT(names(), ElementsAre("start", "mid", "end"));
    firstCut().stampId.reset();
    EXPECT_THAT(names(), ElementsAre("start", "mid", "other stamp's", "end"));
}

TEST_F(CutComposition, FreezeFramesAreInsertedWhereTheirDrawingsWereMade) {
    setCuts({stamp("pass", "x", 10, 20), stamp("shot", "x", 30, 31)});
    for (const auto& name : {"a", "b", "c.png"})
        addDrawing(name, 12, 1.01);  // 31 frames of 30 a second
    addDrawing("end", 20, 2);
    addDrawing("broken", 15, 2);
    drawings.unreadable = {"broken.png"};

    EXPECT_THAT(pieces(*composeFilm(snapshot, tools)), ElementsAre("10+10", "30+1"));
    snapshot.plan.withFreezeFrames = true;
    const auto job = *composeFilm(snapshot, tools);
    EXPECT_THAT(pieces(job), ElementsAre("10+2", "still 1.033", "still 1.033", "still 1.033",
                                         "12+3", "15+5", "still 2", "30+1"));
    const auto& still = std::get<StillPiece>(job.pieces.at(1));
    EXPECT_TRUE(still.image.empty()) << "pictures are read when they show";
    EXPECT_FALSE(still.load().empty());
    EXPECT_NEAR(job.overlays.at(0).duration, 15.1, 1e-9);
    EXPECT_NEAR(job.overlays.at(1).start, 15.1, 1e-9);
    EXPECT_TRUE(
        log.has("📸 Экспорт скриншота 'c.png' с длительностью 1.01 "
                "секунд"));

    snapshot.drawingsFolder.reset();  // not a video of the library, so the cut is left out
    EXPECT_THAT(pieces(*composeFilm(snapshot, tools)), ElementsAre("30+1"));
}

}  // namespace
}  // namespace tembrix
