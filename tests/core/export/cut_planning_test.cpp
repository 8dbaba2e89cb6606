#include "core/export/cut_planning.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/captured_log.h"
#include "fakes/export_records.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct CutPlanning : testing::Test, MatchRecords {
    TimelineLines lines;
    std::optional<Uuid> selected;
    double duration = 100;
    CapturedLog log;

    std::vector<ExportSegment> plan(const CutsExportType& type) {
        return getSegmentsForExport(type, {lines, selected, library, duration}, log);
    }

    static std::vector<std::string> names(const std::vector<ExportSegment>& cuts) {
        std::vector<std::string> result;
        for (const auto& cut : cuts)
            result.push_back(cut.tagName);
        return result;
    }
    static std::pair<double, double> span(const ExportSegment& cut) {
        return {cut.timeRange.start.seconds(), cut.timeRange.duration.seconds()};
    }
};

TEST_F(CutPlanning, EachKindSelectsItsStampsAndSetsItsNames) {
    const auto a = stamp("pass", "a", 10, 12, {"long", "exact"}, {"half"});
    const auto b = stamp("pass", "b", 5, 8, {"lost"});
    const auto c = stamp("shot", "c", 7, 9, {"exact"}, {"half", "press"});
    const auto d = stamp("gone", "d", 20, 22, {"exact", "nowhere"});
    lines = {line("First", {a, b}), line("Second", {c, d})};
    selected = lines[1]->id;

    auto cuts = plan(cuts::TagCuts{pass});
    EXPECT_THAT(names(cuts), ElementsAre("b", "a"));
    EXPECT_EQ(cuts[0].groupName, "Ball");
    EXPECT_EQ(cuts[0].lineName, "First");
    EXPECT_EQ(cuts[0].stampId, b.id);
    EXPECT_EQ(cuts[0].stamp, b);
    EXPECT_EQ(cuts[0].labelGroupName, std::nullopt);

    cuts = plan(cuts::TimeEventCuts{half});
    EXPECT_THAT(names(cuts), ElementsAre("c", "a"));
    EXPECT_EQ(cuts[0].groupName, "Goal");

    cuts = plan(cuts::LabelCuts{exact});
    EXPECT_THAT(names(cuts), ElementsAre("c", "a", "d"));
    EXPECT_EQ(cuts[2].groupName, std::nullopt);
    EXPECT_EQ(cuts[2].labelGroupName, "Outcome");
    EXPECT_EQ(cuts[2].selectedLabel, exact);
    EXPECT_EQ(plan(cuts::LabelCuts{loose}).size(), 0U);

    EXPECT_THAT(names(plan(cuts::TagWithLabels{pass, {lost, exact}})), ElementsAre("b", "a"));
    EXPECT_THAT(names(plan(cuts::TagWithLabels{pass, {longLabel}})), ElementsAre("a"));
    EXPECT_THAT(plan(cuts::TagWithLabels{pass, {}}), IsEmpty());

    cuts = plan(cuts::LabelWithTags{exact, {shot, tag("gone", "")}});
    EXPECT_THAT(names(cuts), ElementsAre("c", "d"));
    EXPECT_EQ(cuts[0].labelGroupName, "Outcome");

    EXPECT_THAT(names(plan(cuts::CurrentTimeline{})), ElementsAre("c", "d"));
    selected = Uuid::random();
    EXPECT_THAT(plan(cuts::CurrentTimeline{}), IsEmpty());
    selected.reset();
    EXPECT_THAT(plan(cuts::CurrentTimeline{}), IsEmpty());

    EXPECT_THAT(names(plan(cuts::AllTimelines{})),
                ElementsAre("b(Lost)", "c(Точный)", "a(Длинный_Точный)", "d(Точный)"));

    EXPECT_THAT(plan(cuts::Screenshots{}), IsEmpty());
    EXPECT_THAT(plan(cuts::DrawingsTimeline{}), IsEmpty());
    lines[0].write().id = drawingsLineId();
    EXPECT_THAT(names(plan(cuts::DrawingsTimeline{})), ElementsAre("b", "a"));
}

TEST_F(CutPlanning, CutsAreClampedToTheVideo) {
    lines = {line("L", {stamp("x", "before", -4, 6), stamp("x", "after", 101, 105),
                        stamp("x", "over", 95, 120), stamp("x", "at end", 100, 101),
                        stamp("x", "empty", 30, 30), stamp("x", "turned", 40, 39)})};
    const auto cuts = plan(cuts::AllTimelines{});
    ASSERT_THAT(names(cuts), ElementsAre("before", "over"));
    EXPECT_EQ(span(cuts[0]), std::pair(0.0, 10.0));  // keeps its length
    EXPECT_EQ(span(cuts[1]), std::pair(95.0, 5.0));

    duration = 0;  // no video is open: only the first second can be cut
    lines = {line("L", {stamp("x", "in", 0.25, 9), stamp("x", "out", 1, 9)})};
    const auto few = plan(cuts::AllTimelines{});
    ASSERT_THAT(names(few), ElementsAre("in"));
    EXPECT_EQ(span(few[0]), std::pair(0.25, 0.75));
}

TEST_F(CutPlanning, TheTagCaseAloneDropsWholeVideosAndSlivers) {
    lines = {line("L", {stamp("pass", "whole", 0.05, 99.55), stamp("pass", "sliver", 50, 50.05),
                        stamp("pass", "late", 0.1, 100), stamp("pass", "short", 60, 60.125)})};
    EXPECT_THAT(names(plan(cuts::TagCuts{pass})), ElementsAre("late", "short"));
    EXPECT_THAT(log.lines(),
                ElementsAre("Пропущен сегмент тега 'Пас' в getSegmentsForExport: покрывает "
                            "99.5% видео",
                            testing::StartsWith(
                                "Пропущен слишком короткий сегмент тега 'Пас': duration=0.0")));
    EXPECT_EQ(plan(cuts::AllTimelines{}).size(), 4U);
}

TEST_F(CutPlanning, EqualStartsKeepTheOrderOfTheTimelines) {
    lines = {line("1", {stamp("x", "b", 5, 6), stamp("x", "a", 3, 20)}),
             line("2", {stamp("x", "c", 5, 9), stamp("x", "d", 5, 7)})};
    EXPECT_THAT(names(plan(cuts::AllTimelines{})), ElementsAre("a", "b", "c", "d"));
}

TEST_F(CutPlanning, TimesAreWholeTicksWithoutFloatingNoise) {
    EXPECT_EQ(MediaTime::fromSeconds(0.29).ticks, 174);  // 173.99999999999997 in doubles
    EXPECT_EQ(MediaTime::fromSeconds(7200.01).ticks, 4320006);
    EXPECT_EQ(MediaTime::fromSeconds(1.0016).ticks, 600);  // truncated
    EXPECT_EQ(logNumber(5), "5.0");
    EXPECT_EQ(logNumber(0.1), "0.1");
}

TEST_F(CutPlanning, LabelsAreGroupedForTheOverlay) {
    const auto groups = labelGroupsForStamp(
        stamp("pass", "", 0, 1, {"lost", "nowhere", "long", "loose", "exact"}), library);
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].group.name, "Outcome");
    EXPECT_THAT(groups[0].selectedLabels, ElementsAre(lost, exact));
    EXPECT_THAT(groups[1].selectedLabels, ElementsAre(longLabel));
}

TEST_F(CutPlanning, ADrawingGetsASubstituteTag) {
    EXPECT_EQ(overlayTag(stamp("pass", "x", 0, 1), library), pass);
    EXPECT_EQ(overlayTag(stamp("gone", "x", 0, 1), library), std::nullopt);
    EXPECT_EQ(overlayTag(stamp("screenshot_1", "", 0, 1), library), std::nullopt);
    const auto drawing = overlayTag(stamp("screenshot_1", "Plan", 0, 1), library);
    ASSERT_TRUE(drawing);
    EXPECT_EQ(drawing->id, "screenshot_1");
    EXPECT_EQ(drawing->name, "Plan");
    EXPECT_EQ(drawing->color, "808080");
    EXPECT_EQ(drawing->defaultTimeBefore, 3.0);
}

TEST_F(CutPlanning, SheetsOfferWhatStampsCarryByName) {
    lines = {line("1", {stamp("shot", "", 0, 1, {"lost", "nowhere"}, {"press"}),
                        stamp("gone", "", 0, 1, {"exact"})}),
             line("2", {stamp("pass", "", 0, 1, {"long", "lost"}, {"half", "press"})})};
    library.labels[2].name = "атака";  // sorts before "Длинный" whatever its case
    const auto ids = [](const auto& records) {
        std::vector<std::string> result;
        for (const auto& record : records)
            result.push_back(record.id);
        return result;
    };
    EXPECT_THAT(ids(tagsOnTimelines(lines, library)), ElementsAre("shot", "pass"));
    EXPECT_THAT(ids(labelsOnTimelines(lines, library)), ElementsAre("lost", "long", "exact"));
    EXPECT_THAT(ids(labelsOfTag(lines, library, pass)), ElementsAre("lost", "long"));
    EXPECT_THAT(ids(tagsOfLabel(lines, library, lost)), ElementsAre("shot", "pass"));
    EXPECT_THAT(ids(eventsOnTimelines(lines, library)), ElementsAre("half", "press"));
    EXPECT_THAT(tagsOfLabel(lines, library, loose), IsEmpty());
}

}  // namespace
}  // namespace tembrix
