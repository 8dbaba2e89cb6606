#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <ostream>
#include <thread>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "fakes/temp_folder.h"
#include "fixtures/frame_code.h"
#include "fixtures/variants.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

// Times at which an off-by-one frame would be noticed: starts, middles, just before and after them,
// both ends.
std::vector<double> telltaleTimes(const MatchVideo& video, double skipped) {
    std::vector<double> times{-0.5, 0, 0.001, video.duration() - skipped, 1e5};
    for (const int frame : {1, 2, 29, 30, 59, 60, 61, 100, 149, 151, video.frameCount() - 2}) {
        const double start = video.frameStart(frame), next = video.frameStart(frame + 1);
        for (const double t : {start, (start + next) / 2, next - 0.0025, start + 0.0025})
            if (t > skipped)
                times.push_back(t - skipped);
    }
    return times;
}

std::string testName(const testing::TestParamInfo<Variant>& test) {
    std::string name = test.param.name;
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

class MediaVariants : public testing::TestWithParam<Variant> {};

TEST_P(MediaVariants, FrameTimeAndFrameGrabGiveTheFrameOfTheTime) {
    const Variant& variant = GetParam();
    const auto& video = variant.video;
    const auto file = fixtureFile(variant);
    FfmpegMedia media;
    // Containers round times; none may be off by more than a millisecond.
    for (const double t : telltaleTimes(video, variant.skipped)) {
        const int expected = video.frameAt(std::max(t, 0.0) + variant.skipped);
        const auto place = media.framePlace(file, t);
        ASSERT_TRUE(place.ok()) << place.error().text;
        EXPECT_NEAR(place->start, video.frameStart(expected) - variant.skipped, 0.00101)
            << "at " << t;
        const auto picture = media.frame(file, t);
        ASSERT_TRUE(picture.ok()) << picture.error().text;
        EXPECT_EQ(readFrameNumber(*picture).value_or(-1), expected) << "at " << t;
    }
}

TEST_P(MediaVariants, ProbeDescribesWhatTheUserSees) {
    const auto& video = GetParam().video;
    FfmpegMedia media;
    const auto info = media.probe(fixtureFile(GetParam()));
    ASSERT_TRUE(info.ok()) << info.error().text;
    EXPECT_EQ(info->size, (Size{320, 180}));
    EXPECT_EQ(info->rotation, video.rotation);
    EXPECT_NEAR(info->duration, video.duration() - GetParam().skipped, 0.02);
    EXPECT_TRUE(info->hasVideo);
    EXPECT_EQ(info->hasAudio, video.sound != MatchVideo::Sound::none);
    if (!GetParam().isStream()) {  // streams may start at any time
        EXPECT_NEAR(info->videoStart, video.startTime, 0.1);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, MediaVariants, testing::ValuesIn(allVariants()), testName);

TEST(Media, ColorsComeOutAsTheyWentIn) {
    FfmpegMedia media;
    const auto picture = media.frame(fixtureFile("30"), 0);
    ASSERT_TRUE(picture.ok());
    // The painted colors of the grass beside the pitch and of the board.
    const auto* grass = picture->row(176) + 4 * 160;
    EXPECT_NEAR(grass[0], 45, 6);
    EXPECT_NEAR(grass[1], 102, 6);
    EXPECT_NEAR(grass[2], 48, 6);
    const auto* white = picture->row(52) + 4 * 6;
    EXPECT_NEAR(white[0], 245, 6);
    EXPECT_EQ(white[3], 255);
}

TEST(Media, FilesWithoutAPictureAreErrorsWithAText) {
    const TempFolder folder;
    const auto file = fixtureFile("30");
    std::ifstream in(file, std::ios::binary);
    const std::string whole((std::istreambuf_iterator<char>(in)), {});
    std::string noise(50000, 'x');
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<char>((i * 2654435761U) >> 13);
    const std::vector<fs::path> bad = {
        folder.write("empty.mp4", ""), folder.write("text.mp4", "Not a video.\nTwo lines.\n"),
        folder.write("text.txt", "Not a video.\n"), folder.write("noise.mp4", noise),
        // The index of this format is at the end, so half a file has none.
        folder.write("half.mp4", whole.substr(0, whole.size() / 2)), folder.path()};
    FfmpegMedia media;
    for (const auto& path : bad) {
        const auto info = media.probe(path);
        ASSERT_FALSE(info.ok()) << path;
        EXPECT_EQ(info.error().domain, "media");
        EXPECT_FALSE(info.error().text.empty());
        EXPECT_FALSE(media.framePlace(path, 1).ok());
        EXPECT_FALSE(media.frame(path, 1).ok());
    }
}

TEST(Media, SoundAloneIsKnownAsSuch) {
    const TempFolder folder;
    const auto sound = folder.path() / "sound.m4a";
    const std::string command = "ffmpeg -nostdin -v error -y -i '" + fixtureFile("30").string() +
                                "' -vn -c copy '" + sound.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    FfmpegMedia media;
    const auto info = media.probe(sound);
    ASSERT_TRUE(info.ok());
    EXPECT_FALSE(info->hasVideo);
    EXPECT_TRUE(info->hasAudio);
    EXPECT_NEAR(info->duration, 12, 0.1);
    EXPECT_FALSE(media.framePlace(sound, 1).ok());
    EXPECT_FALSE(media.frame(sound, 1).ok());
}

TEST(Media, ATruncatedVideoEndsWhereItCanBeRead) {
    const TempFolder folder;
    const auto file = folder.path() / "cut.mkv";
    fs::copy_file(fixtureFile("mkv"), file);
    fs::resize_file(file, fs::file_size(file) / 2);
    FfmpegMedia media;
    const auto info = media.probe(file);
    ASSERT_TRUE(info.ok()) << info.error().text;
    EXPECT_GT(info->duration, 2);
    EXPECT_LT(info->duration, 10);
    const auto last = media.frame(file, 100);
    ASSERT_TRUE(last.ok()) << last.error().text;
    EXPECT_NEAR(readFrameNumber(*last).value_or(-1), info->duration * 30000 / 1001, 4);
}

TEST(Media, AHoleInTheMiddleIsAnErrorAndTheRestIsStillThere) {
    const TempFolder folder;
    const auto file = folder.path() / "hole.mp4";
    fs::copy_file(fixtureFile("30"), file);
    {
        std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
        const auto size = fs::file_size(file);
        out.seekp(static_cast<std::streamoff>(size * 4 / 10));
        const std::string zeros(size * 3 / 10, '\0');
        out << zeros;
    }
    FfmpegMedia media;
    const auto broken = media.frame(file, 6.5);
    ASSERT_FALSE(broken.ok());
    EXPECT_NE(broken.error().text.find("damaged"), std::string::npos) << broken.error().text;
    EXPECT_EQ(readFrameNumber(*media.frame(file, 1)).value_or(-1), 30);
    EXPECT_EQ(readFrameNumber(*media.frame(file, 11)).value_or(-1), 330);
}

TEST(Media, AFileThatIsReplacedOrRemovedIsNotAnsweredFromMemory) {
    const TempFolder folder;
    const auto file = folder.path() / "match.mp4";
    fs::copy_file(fixtureFile("30"), file);
    FfmpegMedia media;
    EXPECT_NEAR(media.probe(file)->duration, 12, 0.01);
    EXPECT_TRUE(media.framePlace(file, 3).ok());
    fs::copy_file(fixtureFile("60"), file, fs::copy_options::overwrite_existing);
    EXPECT_NEAR(media.probe(file)->frameRate, 60, 0.01);
    EXPECT_NEAR(media.framePlace(file, 1.0 / 60)->start, 1.0 / 60, 1e-6);
    fs::remove(file);
    EXPECT_FALSE(media.framePlace(file, 3).ok());
}

TEST(Media, ServesSeveralThreadsAtOnce) {
    FfmpegMedia media;
    const auto file = fixtureFile("long-gop");
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int k = i; k < 660; k += 97) {
                const auto picture = media.frame(file, k / 30.0);
                if (!picture || readFrameNumber(*picture) != k)
                    ++wrong;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(Media, FrameTimesTakeMillisecondsWithRareKeyFrames) {
    FfmpegMedia media;
    const auto file = fixtureFile("long-gop");
    ASSERT_TRUE(media.probe(file).ok());
    const auto begin = std::chrono::steady_clock::now();
    constexpr int count = 100;
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(media.framePlace(file, (i * 7919 % 2300) / 100.0).ok());
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(took.count() / count, 0.005);
}

}  // namespace
}  // namespace tembrix
