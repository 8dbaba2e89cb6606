#include "core/export/overlay_bar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/export/cut_planning.h"
#include "fakes/export_records.h"
#include "fakes/fake_images.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

constexpr Color green{48 / 255.0, 209 / 255.0, 88 / 255.0, 1};
constexpr Color orange{1, 159 / 255.0, 10 / 255.0, 1};
constexpr Color white{1, 1, 1, 1};

struct OverlayText : testing::Test, MatchRecords {
    TimelineLines lines;

    std::optional<RichText> text(const TimelineStamp& of, std::optional<Size> size = {}) {
        const OverlayItem item{
            *overlayTag(of, library), of, labelGroupsForStamp(of, library), {}, {}, size};
        return overlayText(item, StampNumbers(lines), library, library.timeEvents);
    }
};

TEST_F(OverlayText, NamesTagNumberEventsAndLabels) {
    const auto full = stamp("pass", "x", 30, 31, {"lost", "long", "loose", "exact"},
                            {"press", "half", "nowhere"});
    lines = {line("1", {full, stamp("shot", "x", 2, 3)}), line("2", {stamp("pass", "x", 20, 60)})};
    const auto result = text(full, Size{1920, 1080});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->fontSize, 39);
    EXPECT_THAT(
        result->runs,
        ElementsAre(TextRun{"BALL: Пас_2, ", green},
                    TextRun{"First half, Press\n", orange},  // in the library's order
                    TextRun{"OUTCOME: ", white}, TextRun{"Lost, ", white, FontWeight::regular},
                    TextRun{"Точный ", white, FontWeight::regular}, TextRun{"RANGE: ", white},
                    TextRun{"Длинный ", white, FontWeight::regular}));
}

TEST_F(OverlayText, LeavesOutWhatAStampHasNot) {
    library.tagGroups.clear();
    const auto plain = stamp("pass", "x", 1, 2);
    const auto drawing = stamp("screenshot_9", "Plan", 3, 6);
    lines = {line("1", {plain, drawing})};
    EXPECT_THAT(text(plain)->runs, ElementsAre(TextRun{"Пас_1", green}, TextRun{"\n", orange}));
    EXPECT_EQ(text(plain)->fontSize, 13);
    EXPECT_EQ(text(drawing)->runs[0].text, "Plan_1");
    EXPECT_EQ(text(stamp("pass", "off the timelines", 1, 2)), std::nullopt);
}

TEST_F(OverlayText, NumbersRunOverAllTimelinesByStart) {
    std::vector<TimelineStamp> stamps;
    for (const double start : {9.0, 3.0, 9.0, -1.0})
        stamps.push_back(stamp("pass", "x", start, start + 5));
    lines = {line("1", {stamps[0], stamps[1]}), line("2", {stamps[2], stamps[3]})};
    const StampNumbers numbers(lines);
    const auto numberOf = [&](int i) {
        return numbers.numberOf(stamps[static_cast<std::size_t>(i)].id).value_or(0);
    };
    EXPECT_THAT((std::vector{numberOf(0), numberOf(1), numberOf(2), numberOf(3)}),
                ElementsAre(3, 2, 4, 1));
}

TEST(OverlayBar, IsAtTheLowerEdgeAndAsHighAsItsText) {
    const FakeTextMeasure measure;
    // Two lines of 39 * 1.2 = 46.8 pixels each: 93.6, rounded up to 94, and 24 around.
    const RichText text{{{"one\ntwo", green}}, 39};
    const auto bar = overlayBar(text, {1920, 1080}, measure);
    EXPECT_EQ(bar.top, 1080 - 118);
    EXPECT_EQ(bar.picture.size, (Size{1920, 118}));
    ASSERT_EQ(bar.picture.items.size(), 2U);
    EXPECT_EQ(std::get<FillRect>(bar.picture.items[0]),
              (FillRect{{0, 0, 1920, 118}, {0, 0, 0, 0.55}}));
    EXPECT_EQ(std::get<DrawText>(bar.picture.items[1]), (DrawText{{12, 12, 1896, 94}, text}));
}

TEST(OverlayBar, CoversAtMostAQuarterOfThePicture) {
    const FakeTextMeasure measure;
    RichText text{{{"many words that break into lines ", white}}, 13};
    for (int i = 0; i < 5; ++i)
        text.runs[0].text += text.runs[0].text;
    const auto bar = overlayBar(text, {640, 358}, measure);  // a quarter is 89.5
    EXPECT_EQ(bar.top, 358 - 90);
    EXPECT_EQ(std::get<FillRect>(bar.picture.items[0]).rect, (Rect{0, 0.5, 640, 89.5}));
    EXPECT_EQ(std::get<DrawText>(bar.picture.items[1]).rect, (Rect{12, 12.5, 616, 65.5}));

    EXPECT_EQ(overlayBar({}, {640, 360}, measure).picture.size.height, 24);
    EXPECT_EQ(overlayBar(text, {64, 36}, measure).picture.items.size(), 1U);  // no space for text
}

}  // namespace
}  // namespace tembrix
