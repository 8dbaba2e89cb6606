#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "adapters/ffmpeg/ffmpeg_movie_renderer.h"
#include "adapters/ffmpeg/film_helpers.h"
#include "fakes/temp_folder.h"
#include "fixtures/film_check.h"
#include "fixtures/frame_code.h"
#include "fixtures/match_sound.h"
#include "fixtures/variants.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

class Films : public testing::Test {
  protected:
    MovieJob job(const fs::path& source,
                 std::vector<std::variant<SourcePiece, StillPiece>> pieces) {
        MovieJob made;
        made.source = source;
        made.pieces = std::move(pieces);
        made.renderSize = {320, 180};
        made.target = folder_.path() / ("film" + std::to_string(++films_) + ".mp4");
        return made;
    }
    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
    }

    TempFolder folder_;
    FfmpegMovieRenderer renderer_;
    int films_ = 0;
};

void expectNumbers(const std::vector<int>& shown, const std::vector<int>& expected) {
    ASSERT_EQ(shown.size(), expected.size());
    for (std::size_t k = 0; k < shown.size(); ++k)
        EXPECT_EQ(shown[k], expected[k]) << "frame " << k;
}

// Every whole second of the source that is well inside a cut must have its beep at the right place
// in the film.
void expectBeepsInStep(const MovieJob& job, const fs::path& film, double tolerance) {
    const auto beeps = findBeeps(filmSound(film), 48000);
    double start = 0;
    int looked = 0;
    for (const auto& piece : job.pieces) {
        const double duration = std::visit([](const auto& p) { return p.duration; }, piece);
        if (const auto* source = std::get_if<SourcePiece>(&piece))
            for (double second = std::ceil(source->start + 0.01);
                 second < source->start + duration - 0.08; ++second) {
                const double expected = start + second - source->start;
                double nearest = 1e9;
                for (const double beep : beeps)
                    if (std::abs(beep - expected) < std::abs(nearest))
                        nearest = beep - expected;
                EXPECT_NEAR(nearest, 0, tolerance) << "at " << expected;
                ++looked;
            }
        start += duration;
    }
    EXPECT_GT(looked, 0);
}

std::string testName(const testing::TestParamInfo<Variant>& test) {
    std::string name = test.param.name;
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

class FilmVariants : public Films, public testing::WithParamInterface<Variant> {};

TEST_P(FilmVariants, ShowTheFramesOfTheirTimes) {
    const auto& variant = GetParam();
    const double end = variant.video.duration() - variant.skipped;
    const auto work =
        job(fixtureFile(variant), {SourcePiece{2.517, 1.2}, SourcePiece{0, 1.5},
                                   SourcePiece{end - 1.05, 1.05}, SourcePiece{1.0 / 3, 0.75}});
    const auto film = renderAndWait(renderer_, work);
    ASSERT_TRUE(film.ok()) << film.error().text;
    expectNumbers(frameNumbers(*film), expectedNumbers(work, variant.video, -1, variant.skipped));
    if (variant.video.sound == MatchVideo::Sound::none) {
        EXPECT_TRUE(filmFacts(*film, "a:0", "stream=codec_name").empty());
        return;
    }
    if (variant.skipped == 0)
        expectBeepsInStep(work, *film, 0.01);
}

INSTANTIATE_TEST_SUITE_P(Files, FilmVariants, testing::ValuesIn(allVariants()), testName);

TEST_F(Films, ThirtyCutsOfOddLengthsStayInStepToTheEnd) {
    std::vector<std::variant<SourcePiece, StillPiece>> pieces;
    double sum = 0;
    for (int i = 0; i < 30; ++i) {
        const double start = std::round((i * 0.613 + 0.2) * 600) / 600;
        const double duration = std::round((0.7 + (i * 37 % 11) * 0.0917) * 600) / 600;
        pieces.push_back(SourcePiece{start, duration});
        sum += duration;
    }
    const auto work = job(fixtureFile("long-gop"), pieces);
    const auto film = renderAndWait(renderer_, work);
    ASSERT_TRUE(film.ok()) << film.error().text;
    const auto numbers = frameNumbers(*film);
    EXPECT_EQ(static_cast<long>(numbers.size()), std::lround(sum * 30));
    expectNumbers(numbers, expectedNumbers(work, variant("long-gop").video, -1));
    expectBeepsInStep(work, *film, 0.005);
    const auto facts =
        filmFacts(*film, "v:0", "stream=codec_name,r_frame_rate,avg_frame_rate,start_time");
    EXPECT_EQ(facts, (std::vector<std::string>{"h264", "30/1", "30/1", "0.000000"}));
    EXPECT_EQ(filmFacts(*film, "a:0", "stream=codec_name,channels,start_time"),
              (std::vector<std::string>{"aac", "2", "0.000000"}));
    EXPECT_NEAR(std::stod(filmFacts(*film, "v:0", "format=duration").at(0)), sum, 0.04);
}

TEST_F(Films, StillsAreFittedOnBlackAndSilentAndKeepTheRestInStep) {
    ImageBuffer square(200, 200);
    for (std::size_t i = 0; i < square.pixels.size(); i += 4) {
        square.pixels[i] = 220;
        square.pixels[i + 1] = 40;
        square.pixels[i + 2] = 40;
        square.pixels[i + 3] = 255;
    }
    const StillPiece atHand{square, 5.0 / 3, {}};
    const StillPiece loaded{{}, 0.5, [square] { return square; }};
    const auto work =
        job(fixtureFile("30"), {SourcePiece{0.9, 0.6}, atHand, loaded, SourcePiece{1.5, 2}});
    const auto film = renderAndWait(renderer_, work);
    ASSERT_TRUE(film.ok()) << film.error().text;
    expectNumbers(frameNumbers(*film), expectedNumbers(work, variant("30").video, -1));
    forEachFrame(*film, [](int index, const ImageBuffer& picture) {
        if (index < 18 || index >= 83)
            return;
        const auto* left = picture.row(90) + 4 * 30;
        const auto* middle = picture.row(90) + 4 * 160;
        EXPECT_LT(left[0] + left[1] + left[2], 12) << index;
        EXPECT_NEAR(middle[0], 220, 5) << index;
        EXPECT_NEAR(middle[1], 40, 5) << index;
    });
    expectBeepsInStep(work, *film, 0.005);
    const auto sound = filmSound(*film);
    float loudest = 0;
    for (std::size_t i = 48000 * 70 / 100; i < 48000 * 270 / 100; ++i)
        loudest = std::max(loudest, std::abs(sound[i]));
    EXPECT_LT(loudest, 0.002F);
}

TEST_F(Films, OverlaysLieOverTheirCutsOnlyAndKeepTheirColors) {
    auto work =
        job(fixtureFile("30"), {SourcePiece{1, 0.7}, SourcePiece{4, 0.51}, SourcePiece{2, 0.4}});
    // A bar of black at a little over half, with an opaque green field in it.
    MovieOverlay bar;
    bar.image = ImageBuffer(320, 41);
    for (int y = 0; y < 41; ++y)
        for (int x = 0; x < 320; ++x) {
            auto* p = bar.image.row(y) + 4 * x;
            const bool field = x >= 101 && x < 161 && y >= 5 && y < 36;
            p[1] = field ? 200 : 0;
            p[3] = field ? 255 : 140;
        }
    bar.y = 139;
    bar.start = 0.7;
    bar.duration = 0.51;
    work.overlays = {bar};
    const auto film = renderAndWait(renderer_, work);
    ASSERT_TRUE(film.ok()) << film.error().text;
    auto plain = work;
    plain.overlays.clear();
    plain.target = folder_.path() / "plain.mp4";
    ASSERT_TRUE(renderAndWait(renderer_, plain).ok());
    std::vector<ImageBuffer> without;
    forEachFrame(plain.target,
                 [&](int, const ImageBuffer& picture) { without.push_back(picture); });
    forEachFrame(*film, [&](int index, const ImageBuffer& picture) {
        const bool over = index >= 21 && index < 37;  // 0.7 s to 1.21 s
        const auto& same = without.at(static_cast<std::size_t>(index));
        const auto* above = picture.row(130) + 4 * 40;
        EXPECT_NEAR(above[1], same.row(130)[4 * 40 + 1], 12) << index;
        const auto* barred = picture.row(176) + 4 * 40;
        EXPECT_NEAR(barred[1], same.row(176)[4 * 40 + 1] * (over ? 115.0 / 255 : 1), 8) << index;
        const auto* field = picture.row(160) + 4 * 130;
        if (over) {
            EXPECT_LT(field[0], 14) << index;
            EXPECT_NEAR(field[1], 200, 8) << index;
            EXPECT_LT(field[2], 14) << index;
        } else {
            EXPECT_LT(field[1], 170) << index;
        }
    });
}

TEST_F(Films, WhatCannotBeReadEndsTheRunWithATextAndLeavesNothing) {
    const auto good = fixtureFile("30");
    const TempFolder sources;
    const auto sound = sources.path() / "sound.m4a";
    const std::string command = "ffmpeg -nostdin -v error -y -i '" + good.string() +
                                "' -vn -c copy '" + sound.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const auto hole = sources.path() / "hole.mp4";
    fs::copy_file(good, hole);
    {
        std::fstream out(hole, std::ios::binary | std::ios::in | std::ios::out);
        const auto size = fs::file_size(hole);
        out.seekp(static_cast<std::streamoff>(size * 4 / 10));
        out << std::string(size * 3 / 10, '\0');
    }
    const struct {
        fs::path source;
        SourcePiece piece;
        const char* says;
    } cases[] = {{sources.path() / "gone.mp4", {0, 1}, ""},
                 {sources.write("empty.mp4", ""), {0, 1}, "damaged"},
                 {sources.write("text.mp4", "words"), {0, 1}, "damaged"},
                 {sound, {0, 1}, "no video"},
                 {hole, {2, 8}, "damaged at"},
                 {good, {9, 8}, "up to 12.0 seconds"}};
    for (const auto& c : cases) {
        const auto film = renderAndWait(renderer_, job(c.source, {c.piece}));
        ASSERT_FALSE(film.ok()) << c.source;
        EXPECT_EQ(film.error().domain, "Export");
        EXPECT_NE(film.error().code, 999);
        EXPECT_FALSE(film.error().text.empty());
        EXPECT_NE(film.error().text.find(c.says), std::string::npos) << film.error().text;
    }
    EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(Films, AFullDiskEndsTheRunWithATextAndLeavesNothing) {
    const auto source = fixtureFile("30");
    // The limit on the size of files simulates a full disk; it affects this process only.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t room : {1000U, 100000U}) {
        const rlimit small{room, before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        const auto film = renderAndWait(renderer_, job(source, {SourcePiece{0, 10}}));
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        ASSERT_FALSE(film.ok()) << room;
        EXPECT_EQ(film.error().domain, "file");
        EXPECT_EQ(film.error().code, EFBIG) << film.error().text;
        EXPECT_EQ(filesInFolder(), 0U);
    }
    std::signal(SIGXFSZ, handler);
    const auto nowhere = folder_.path() / "none" / "film.mp4";
    auto work = job(source, {SourcePiece{0, 1}});
    work.target = nowhere;
    EXPECT_FALSE(renderAndWait(renderer_, work).ok());
}

TEST_F(Films, ManyRunsAtOnceAllEndAndWaitingOnesCanBeCanceled) {
    constexpr int count = 12;
    std::vector<std::shared_ptr<MovieSession>> sessions;
    std::vector<std::future<Result<fs::path>>> endings;
    for (int i = 0; i < count; ++i) {
        auto end = std::make_shared<std::promise<Result<fs::path>>>();
        endings.push_back(end->get_future());
        auto session = renderer_.start(job(fixtureFile("30"), {SourcePiece{i * 0.5, 1}}),
                                       [end](auto result) { end->set_value(result); });
        ASSERT_TRUE(session.ok());
        sessions.push_back(*session);
    }
    sessions[count - 1]->cancel();
    EXPECT_EQ(endings[count - 1].get().error().code, 999);
    for (int i = 0; i + 1 < count; ++i) {
        const auto film = endings[static_cast<std::size_t>(i)].get();
        ASSERT_TRUE(film.ok()) << film.error().text;
        EXPECT_EQ(frameNumbers(*film).front(), i * 15);
    }
}

TEST_F(Films, AnEndedRunHasReleasedItsJob) {
    auto work = job(fixtureFile("30"), {SourcePiece{1, 0.5}});
    auto large = std::make_shared<int>();
    const std::weak_ptr<int> held = large;
    MovieOverlay overlay;
    overlay.duration = 0.5;
    overlay.paint = [large] { return ImageBuffer(); };
    work.overlays.push_back(std::move(overlay));
    overlay = {};
    large.reset();
    std::promise<bool> released;
    const auto session = renderer_.start(
        std::move(work), [&](const Result<fs::path>&) { released.set_value(held.expired()); });
    ASSERT_TRUE(session.ok());
    EXPECT_TRUE(released.get_future().get()) << "though the session is still in hand";
}

TEST_F(Films, APictureOfAnotherShapeIsFittedWholeOnBlack) {
    auto work = job(fixtureFile("rotated-90"), {SourcePiece{1, 0.5}});
    work.renderSize = {401, 300};  // odd: films have even sides
    const auto film = renderAndWait(renderer_, work);
    ASSERT_TRUE(film.ok()) << film.error().text;
    EXPECT_EQ(filmFacts(*film, "v:0", "stream=width,height"),
              (std::vector<std::string>{"400", "300"}));
    forEachFrame(*film, [](int index, const ImageBuffer& picture) {
        EXPECT_LT(picture.row(10)[4 * 200 + 1], 6) << index;
        EXPECT_LT(picture.row(290)[4 * 200 + 1], 6) << index;
        // The grass at the bottom of the picture must be at the bottom of the film.
        const auto* grass = picture.row(258) + 4 * 200;
        EXPECT_GT(grass[1], grass[0] + 30) << index;
    });
}

}  // namespace
}  // namespace tembrix
