#include <cmath>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "adapters/ffmpeg/ffmpeg_movie_renderer.h"
#include "adapters/qt/qt_pictures.h"
#include "adapters/qt/qt_process_runner.h"
#include "core/export/export_helper.h"
#include "core/export/export_services.h"
#include "fakes/core_project.h"
#include "fakes/export_records.h"
#include "fixtures/film_check.h"
#include "fixtures/frame_code.h"
#include "fixtures/match_video.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

// A renderer that can wait until all current runs have ended.
class AwaitedRenderer final : public MovieRenderer {
  public:
    Result<std::shared_ptr<MovieSession>> start(MovieJob job, Completion completion) override {
        const auto end = std::make_shared<std::promise<void>>();
        ends_.push_back(end->get_future());
        return renderer_.start(std::move(job),
                               [end, completion = std::move(completion)](Result<fs::path> result) {
                                   completion(std::move(result));
                                   end->set_value();
                               });
    }
    bool await() {
        auto ends = std::exchange(ends_, {});
        for (auto& end : ends)
            end.wait();
        return !ends.empty();
    }

  private:
    std::vector<std::future<void>> ends_;
    FfmpegMovieRenderer renderer_;
};

// What a test reads from a frame of a film: its number and the colors at the lower edge.
struct Seen {
    int number = -1;
    double edge = 0;      // luminance beside the text, near the lower right corner
    int greenPixels = 0;  // of the text's first part, in the lower quarter
};

std::vector<Seen> look(const fs::path& film) {
    std::vector<Seen> frames;
    forEachFrame(film, [&](int, const ImageBuffer& picture) {
        Seen seen;
        seen.number = readFrameNumber(picture).value_or(-1);
        int count = 0;
        for (int y = picture.height - 10; y < picture.height - 4; ++y)
            for (int x = picture.width - 10; x < picture.width - 4; ++x, ++count) {
                const auto* p = picture.row(y) + x * 4;
                seen.edge += 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
            }
        seen.edge /= count;
        for (int y = picture.height * 3 / 4; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                const auto* p = picture.row(y) + x * 4;
                seen.greenPixels += p[1] > 150 && p[0] < 110 && p[2] < 140;
            }
        frames.push_back(seen);
    });
    return frames;
}

// The real adapters for rendering and packing.
struct RealParts {
    FfmpegMedia media;
    AwaitedRenderer renderer;
    QtPictureRenderer pictures{{"Inter", "Sans"}};
    QtTextMeasure measure{{"Inter", "Sans"}};
    QtProcessRunner processes;
};

struct RealExport : testing::Test, RealParts, MatchRecords {
    CoreProject project{{.processes = &processes,
                         .media = &media,
                         .renderer = &renderer,
                         .pictures = &pictures,
                         .textMeasure = &measure}};
    MatchVideo match;
    fs::path source = project.folder.path() / "match.mp4";
    ExportServices& services = project.opened.exports;
    ExportHelper helper{services};
    int completions = 0;
    std::optional<Error> error;
    fs::path saved = project.folder.path() / "saved";

    RealExport() {
        fs::create_directories(saved);
        project.texts.set("fullControlFileTimelineFile", "video.mp4");
        match.width = 640;
        match.height = 360;
        match.seconds = 8;
    }

    void open(std::vector<TimelineStamp> first, std::vector<TimelineStamp> second = {}) {
        const auto made = makeMatchVideo(match, source);
        ASSERT_TRUE(made) << made.error().text;
        project.players.duration = match.duration();
        project.player.open(source);
        project.useCollection("Match", library);
        TimelineLines lines{line("First", std::move(first)), line("Second", std::move(second))};
        project.timeline.replaceLines(std::move(lines));
    }
    void run(bool asPlaylist) {
        helper.startExport(cuts::AllTimelines{}, asPlaylist, false,
                           [this](std::optional<Error> result) {
                               ++completions;
                               error = std::move(result);
                           });
        do
            project.scheduler.run();
        while (renderer.await());
        project.scheduler.run();
    }
    void save(const fs::path& target) {
        ASSERT_FALSE(project.panels.saves.empty()) << (error ? error->text : "no panel");
        project.panels.answerSave(target);
        project.scheduler.run();
        EXPECT_EQ(completions, 1);
        EXPECT_FALSE(error) << error->text;
    }
    bool nothingIsLeft() const { return fs::is_empty(services.directories.temporary / "exports"); }
    // The frame numbers that cuts show at 30 frames per second, in sequence.
    std::vector<int> numbersOf(const std::vector<std::pair<double, double>>& spans) const {
        std::vector<int> numbers;
        for (const auto& [start, finish] : spans)
            for (long k = 0; k < std::lround((finish - start) * 30); ++k)
                numbers.push_back(match.frameAt(start + static_cast<double>(k) / 30));
        return numbers;
    }
};

TEST_F(RealExport, AFilmShowsItsCutsToTheFrameEachWithItsBar) {
    open({stamp("shot", "Shot", 5, 6.5, {"exact"}),
          stamp("pass", "Пас", 1, 2.2, {"long"}, {"half"})},
         {stamp("gone", "no tag", 3, 4)});
    run(false);
    save(saved / "film.mp4");

    const auto frames = look(saved / "film.mp4");
    std::vector<int> numbers;
    for (const auto& frame : frames)
        numbers.push_back(frame.number);
    EXPECT_EQ(numbers, numbersOf({{1, 2.2}, {3, 4}, {5, 6.5}}));

    std::map<int, double> plainEdge;
    for (const auto& frame : look(source))
        plainEdge[frame.number] = frame.edge;
    for (const auto& frame : frames) {
        const bool barred = frame.number < match.frameAt(3) || frame.number >= match.frameAt(5);
        EXPECT_NEAR(frame.edge, plainEdge[frame.number] * (barred ? 0.45 : 1), 6)
            << "frame " << frame.number;
        // The green of the pitch under the bar is darker than the green of the text.
        EXPECT_TRUE(!barred || frame.greenPixels > 20) << "frame " << frame.number;
    }
    const double soundLength = static_cast<double>(filmSound(saved / "film.mp4").size()) / 48000;
    EXPECT_NEAR(soundLength, 3.7, 0.03);
    EXPECT_TRUE(nothingIsLeft());
}

TEST_F(RealExport, AnArchiveContainsOneClipPerCut) {
    open({stamp("shot", "Up/down", 5, 6), stamp("pass", "Пас", 1, 1.5, {"long"})});
    run(true);
    save(saved / "clips.zip");

    const auto unpacked = project.folder.path() / "unpacked";
    const auto outcome = processes.run(
        "python3", {"-m", "zipfile", "-e", (saved / "clips.zip").string(), unpacked.string()});
    ASSERT_TRUE(outcome && outcome->exitStatus == 0) << outcome->output;
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(unpacked))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    ASSERT_THAT(names, ElementsAre("First_Ball_Пас(Длинный)_1.mp4", "First_Goal_Up-down_2.mp4"));
    EXPECT_EQ(frameNumbers(unpacked / names[0]), numbersOf({{1, 1.5}}));
    const auto second = look(unpacked / names[1]);
    EXPECT_EQ(second.size(), 30U);
    EXPECT_GT(second.front().greenPixels, 20);
    EXPECT_GT(second.back().greenPixels, 20);
}

TEST_F(RealExport, ATurnedVideoWithoutSoundGivesAnUprightFilmWithoutSound) {
    match.width = 322;
    match.height = 182;
    match.rotation = 90;
    match.seconds = 2;
    match.sound = MatchVideo::Sound::none;
    open({stamp("pass", "x", 0.5, 1)});
    run(false);
    save(saved / "film.mp4");
    EXPECT_THAT(filmFacts(saved / "film.mp4", "v:0", "stream=width,height"),
                ElementsAre("322", "182"));
    EXPECT_EQ(frameNumbers(saved / "film.mp4"), numbersOf({{0.5, 1}})) << "upright";
    EXPECT_THAT(filmFacts(saved / "film.mp4", "a", "stream=codec_name"), testing::IsEmpty());
}

TEST_F(RealExport, ASourceThatIsNoLongerAVideoIsReportedAndLeavesNoFile) {
    open({stamp("pass", "x", 1, 2)});
    std::ofstream(source, std::ios::trunc) << "not a video";
    run(false);
    EXPECT_EQ(completions, 1);
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text, testing::StartsWith("fullControlExportFilmError: "));
    EXPECT_THAT(project.panels.saves, testing::IsEmpty());
    EXPECT_TRUE(nothingIsLeft());
}

}  // namespace
}  // namespace tembrix
