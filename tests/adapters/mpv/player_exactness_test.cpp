#include <QElapsedTimer>
#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "shown_player.h"

namespace tembrix {

namespace {

// Times at which an off-by-one frame would be noticed: the first and the last frame, key frames,
// starts, ends and middles; forwards, backwards and with large jumps.
std::vector<double> tellingTimes(const Variant& variant) {
    const auto& video = variant.video;
    std::vector<double> times{0, 0.001, video.duration() - variant.skipped, 0};
    std::mt19937 random(7);
    std::uniform_int_distribution<int> anyFrame(0, video.frameCount() - 2);
    std::vector<int> frames{1, 59, 60, 61, 120, 119, video.frameCount() - 2};
    for (int i = 0; i < 8; ++i)
        frames.push_back(anyFrame(random));
    for (const int frame : frames) {
        const double start = video.frameStart(frame), next = video.frameStart(frame + 1);
        for (const double t : {start, (start + next) / 2, next - 0.0025})
            if (t > variant.skipped && frame < video.frameCount() - 1)
                times.push_back(t - variant.skipped);
    }
    return times;
}

void expectExactSeeks(const Variant& variant, MpvDrawing drawing) {
    const auto file = fixtureFile(variant);
    ShownPlayer shown(file, drawing);
    for (const double t : tellingTimes(variant)) {
        ASSERT_TRUE(shown.seek(t)) << "to " << t;
        const auto grabbed = shown.media.frame(file, t);
        ASSERT_TRUE(grabbed.ok());
        EXPECT_EQ(shown.number(), readFrameNumber(*grabbed).value_or(-2)) << "at " << t;
        EXPECT_EQ(shown.number(), variant.video.frameAt(t + variant.skipped)) << "at " << t;
        EXPECT_NEAR(shown.player->currentTime(), t, 0.02);
    }
}

class PlayerExactness : public testing::TestWithParam<Variant> {};

TEST_P(PlayerExactness, ASeekShowsTheFrameOfTheFrameGrab) {
    expectExactSeeks(GetParam(), MpvDrawing::inMemory);
}

// Pictures are rotated in another way on the graphics card.
TEST(PlayerExactnessOnTheGraphicsCard, ASeekShowsTheFrameOfTheFrameGrab) {
    for (const char* name : {"30", "rotated-90", "rotated-180", "rotated-270"})
        expectExactSeeks(variant(name), MpvDrawing::openGl);
}

INSTANTIATE_TEST_SUITE_P(Files, PlayerExactness, testing::ValuesIn(allVariants()),
                         [](const auto& test) {
                             std::string name = test.param.name;
                             for (char& c : name)
                                 c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

TEST(PlayerTime, IsThatOfTheFrameOnScreenAfterEveryPause) {
    std::mt19937 random(3);
    for (const char* name : {"late-start", "60", "program"}) {
        const auto& variant = tembrix::variant(name);
        ShownPlayer shown(fixtureFile(variant), MpvDrawing::inMemory);
        for (const double rate : {0.5, 1.0, 2.0, 5.0}) {
            ASSERT_TRUE(shown.seek(0.5));
            for (int pause = 0; pause < 7; ++pause) {
                shown.player->setRate(rate);
                const double moment = shown.player->currentTime() +
                                      rate * std::uniform_real_distribution(0.02, 0.2)(random);
                ASSERT_TRUE(
                    QTest::qWaitFor([&] { return shown.player->currentTime() >= moment; }, 10000));
                shown.player->pause();
                // Longer than a frame needs until it is on screen.
                QTest::qWait(150);
                EXPECT_EQ(shown.number(), variant.video.frameAt(shown.player->currentTime()))
                    << name << " at speed " << rate;
            }
        }
    }
}

TEST(PlayerSpeed, IsExactWithoutASoundDevice) {
    ShownPlayer shown(fixtureFile("surround"));
    for (const double rate : {0.5, 2.0, 5.0}) {
        ASSERT_TRUE(shown.seek(1));
        shown.player->setRate(rate);
        const double from = shown.player->currentTime();
        QElapsedTimer clock;
        clock.start();
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return shown.player->currentTime() >= from + rate; }, 10000));
        // About one second at the rate, with a tolerance for the start of playback on a busy
        // machine.
        EXPECT_GT(clock.elapsed(), 700) << rate;
        EXPECT_LT(clock.elapsed(), 2500) << rate;
        shown.player->pause();
    }
}

TEST(PlayerDrag, AStreamOfSeeksShowsAStreamOfPictures) {
    const auto& variant = tembrix::variant("long-gop");
    ShownPlayer shown(fixtureFile(variant));
    ASSERT_TRUE(shown.seek(0));
    std::vector<int> numbers;
    int finished = 0, ended = 0;
    for (int step = 1; step <= 60; ++step) {
        shown.player->seek(20.0 * step / 60, [&](bool whole) {
            ++ended;
            finished += whole;
        });
        QTest::qWait(16);  // the interval of mouse events during a drag
        if (const int number = shown.number(); numbers.empty() || number != numbers.back())
            numbers.push_back(number);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return ended == 60; }, 10000));
    EXPECT_GE(finished, 1);
    EXPECT_EQ(shown.number(), variant.video.frameAt(20));
    EXPECT_GE(numbers.size(), 4u);
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

}  // namespace
}  // namespace tembrix
