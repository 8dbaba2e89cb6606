#include <algorithm>
#include <gtest/gtest.h>

#include "shown_player.h"

namespace tembrix {
namespace {

bool isBlack(const ImageBuffer& picture) {
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4)
        if (picture.pixels[i] > 8 || picture.pixels[i + 1] > 8 || picture.pixels[i + 2] > 8)
            return false;
    return true;
}

class VideoSurface : public testing::TestWithParam<MpvDrawing> {
  protected:
    ShownPlayer shown{{}, GetParam()};
};

TEST_P(VideoSurface, FollowsAChangeOfPlayerAndIsBlackWithoutOne) {
    EXPECT_TRUE(isBlack(shown.picture()));
    shown.player = shown.factory.open(fixtureFile("30"));
    ASSERT_TRUE(shown.seek(2));
    EXPECT_EQ(shown.number(), 60);
    shown.player = shown.factory.open(fixtureFile("25"));
    ASSERT_TRUE(shown.seek(2));
    EXPECT_EQ(shown.number(), 50);
    shown.player.reset();
    EXPECT_TRUE(isBlack(shown.picture()));
}

TEST_P(VideoSurface, ComesBeforeOrAfterThePlayer) {
    shown.surface.reset();
    shown.player = shown.factory.open(fixtureFile("30"));
    ASSERT_TRUE(shown.seek(3));
    for (int i = 0; i < 2; ++i) {
        shown.surface.reset(shown.factory.makeSurface(nullptr));
        shown.surface->resize(320, 180);
        shown.surface->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(shown.surface.get()));
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown.number() == 90; }, 5000));
    }
}

TEST_P(VideoSurface, FitsThePictureOnBlackAtEverySize) {
    shown.player = shown.factory.open(fixtureFile("30"));
    ASSERT_TRUE(shown.seek(1));
    shown.surface->resize(640, 480);
    const auto pixel = [](const ImageBuffer& picture, int x, int y) {
        return *std::max_element(picture.row(y) + 4 * x, picture.row(y) + 4 * x + 3);
    };
    // 640 by 360, with 60 black rows above and below.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            const auto picture = shown.picture();
            return picture.height == 480 && pixel(picture, 320, 30) < 8 &&
                   pixel(picture, 320, 450) < 8 && pixel(picture, 320, 240) > 30 &&
                   pixel(picture, 320, 66) > 8 && pixel(picture, 320, 414) > 8;
        },
        5000));
}

INSTANTIATE_TEST_SUITE_P(Drawings, VideoSurface,
                         testing::Values(MpvDrawing::openGl, MpvDrawing::inMemory),
                         [](const auto& test) {
                             return test.param == MpvDrawing::openGl ? "OpenGl" : "InMemory";
                         });

}  // namespace
}  // namespace tembrix
