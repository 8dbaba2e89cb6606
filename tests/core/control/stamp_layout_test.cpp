#include "core/control/stamp_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace tembrix {
namespace {

using testing::ElementsAre;

Stamps stampsOf(std::vector<std::pair<double, double>> times) {
    Stamps stamps;
    for (const auto& [start, finish] : times) {
        TimelineStamp stamp;
        stamp.timeStartSeconds = start;
        stamp.timeFinishSeconds = finish;
        stamps.emplace_back(std::move(stamp));
    }
    return stamps;
}

std::vector<int> plainLevels(const Stamps& stamps) {
    std::vector<int> levels;
    for (std::size_t i = 0; i < stamps.size(); ++i) {
        int level = 0;
        for (std::size_t j = 0; j < i; ++j)
            level += stamps[j]->timeStartSeconds < stamps[i]->timeFinishSeconds &&
                     stamps[i]->timeStartSeconds < stamps[j]->timeFinishSeconds;
        levels.push_back(level);
    }
    return levels;
}

TEST(StampLayoutTest, TouchingStampsDoNotOverlap) {
    EXPECT_THAT(overlapLevels(stampsOf({{0, 10}, {5, 15}, {8, 12}, {15, 20}})),
                ElementsAre(0, 1, 2, 0));
    EXPECT_THAT(overlapLevels({}), ElementsAre());
}

TEST(StampLayoutTest, LevelsAgreeWithTheDefinitionOnAnyIntervals) {
    std::mt19937 random(7);
    for (int round = 0; round < 600; ++round) {
        // With few distinct times there are many coinciding, empty and backward stamps.
        std::uniform_int_distribution time(0, 2 + round % 23);
        const bool backward = round % 2;
        std::vector<std::pair<double, double>> times(1 + round % 60);
        for (auto& [start, finish] : times) {
            start = time(random);
            finish = time(random);
            if (!backward && finish < start)
                std::swap(start, finish);
        }
        const Stamps stamps = stampsOf(times);
        const auto levels = overlapLevels(stamps);
        ASSERT_EQ(levels, plainLevels(stamps)) << "round " << round;
        const auto known = static_cast<std::ptrdiff_t>(random() % (stamps.size() + 1));
        ASSERT_EQ(overlapLevels(stamps, {levels.begin(), levels.begin() + known}), levels);
    }
}

TEST(StampLayoutTest, RectanglesKeepTheirLeastSizeAndStayOnTheAxis) {
    const TimelineAxis hour{3600, 180, 1000};
    const auto rect = [&](double start, double finish, int level = 0) {
        return stampRect(*stampsOf({{start, finish}})[0], level, hour);
    };
    EXPECT_EQ(rect(360, 720), (Rect{100, 2.5, 100, 25}));
    EXPECT_EQ(rect(360, 720, 1), (Rect{100, 5.5, 100, 19}));
    EXPECT_EQ(rect(360, 720, 2).height, 13);
    EXPECT_EQ(rect(360, 720, 5), (Rect{100, 13, 100, 4}));
    EXPECT_EQ(rect(360, 720, 40).height, 4);
    EXPECT_EQ(rect(360, 360.1).width, 10);
    EXPECT_EQ(rect(3599, 3600).right(), 1000);  // moved back onto the axis
    EXPECT_EQ(rect(4000, 3600).right(), 1000);
    EXPECT_EQ(rect(-100, -90).x, 0);
}

}  // namespace
}  // namespace tembrix
