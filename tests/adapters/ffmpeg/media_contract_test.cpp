#include <functional>
#include <gtest/gtest.h>
#include <memory>

#include "adapters/ffmpeg/ffmpeg_media.h"
#include "fakes/fake_media.h"
#include "fixtures/frame_code.h"
#include "fixtures/variants.h"

namespace tembrix {
namespace {

// A video of 12 seconds, 320 by 180, 30 frames per second, and a way to identify its frames.
struct Subject {
    std::shared_ptr<Media> media;
    std::filesystem::path file;
    std::function<int(const ImageBuffer&)> number;
};

Subject real() {
    return {std::make_shared<FfmpegMedia>(), fixtureFile("30"),
            [](const ImageBuffer& image) { return readFrameNumber(image).value_or(-1); }};
}

Subject fake() {
    auto media = std::make_shared<FakeMedia>();
    media->add("/match.mp4", 12, {320, 180});
    return {media, "/match.mp4", FakeMedia::frameNumber};
}

class MediaContract : public testing::TestWithParam<Subject (*)()> {};

TEST_P(MediaContract, TheFrameOfATime) {
    const auto [media, file, number] = GetParam()();
    const struct {
        double seconds;
        int frame;
    } cases[] = {{-1, 0},     {0, 0},    {1.0 / 30 - 0.001, 0}, {1.0 / 30, 1},
                 {0.0329, 1}, {5, 150},  {5 - 0.0005, 150},     {11.99, 359},
                 {12, 359},   {1e6, 359}};
    for (const auto& c : cases) {
        const auto place = media->framePlace(file, c.seconds);
        ASSERT_TRUE(place.ok()) << place.error().text;
        EXPECT_NEAR(place->start, c.frame / 30.0, 1e-6) << c.seconds;
        const auto picture = media->frame(file, c.seconds);
        ASSERT_TRUE(picture.ok()) << picture.error().text;
        EXPECT_EQ(number(*picture), c.frame) << c.seconds;
        EXPECT_EQ(picture->width, 320);
        EXPECT_EQ(picture->height, 180);
    }
}

TEST_P(MediaContract, ThumbnailsFitAndAreNeverEnlarged) {
    const auto [media, file, number] = GetParam()();
    const auto wide = media->thumbnail(file, 1, {100, 1000});
    ASSERT_TRUE(wide.ok());
    EXPECT_EQ(wide->width, 100);
    EXPECT_EQ(wide->height, 56);
    const auto whole = media->thumbnail(file, 1, {1000, 1000});
    ASSERT_TRUE(whole.ok());
    EXPECT_EQ(whole->width, 320);
    EXPECT_EQ(number(*whole), 30);
}

TEST_P(MediaContract, AMissingFileIsAnError) {
    const auto media = GetParam()().media;
    EXPECT_EQ(media->probe("/none.mp4").error().domain, "media");
    EXPECT_FALSE(media->framePlace("/none.mp4", 0).ok());
    EXPECT_FALSE(media->frame("/none.mp4", 0).ok());
}

INSTANTIATE_TEST_SUITE_P(Subjects, MediaContract, testing::Values(&real, &fake),
                         [](const auto& subject) { return subject.index == 0 ? "Real" : "Fake"; });

}  // namespace
}  // namespace tembrix
