#include "core/control/timeline_editing_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/control/playhead_follow.h"
#include "core/control/timeline_ruler.h"
#include "core/storage/data_layout.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

constexpr double width = 1000;  // points for the axis; the video lasts 100 seconds

class TimelineEditingModelTest : public testing::Test {
  protected:
    TimelineEditingModelTest() {
        project.markupModes.setMarkupMode(MarkupMode::standard);
        project.openVideo();
        project.player.pause();
        model.appear();
    }

    Uuid addLine(const std::string& name) {
        project.timeline.addLine(name);
        return project.timeline.lines->back()->id;
    }
    Uuid addStamp(const Uuid& line, double start, double finish,
                  const std::string& label = "Pass") {
        TimelineStamp stamp;
        stamp.id = Uuid::random();
        stamp.idTag = "unknown";
        stamp.label = label;
        stamp.colorHex = "FF0000";
        stamp.timeStartSeconds = start;
        stamp.timeFinishSeconds = finish;
        project.timeline.appendStamp(line, stamp);
        return stamp.id;
    }
    const TimelineStamp& stamp(const Uuid& id) { return *project.timeline.findStamp(id)->stamp; }
    std::vector<std::string> lineNames() {
        std::vector<std::string> names;
        for (const auto& line : *project.timeline.lines)
            names.push_back(line->name);
        return names;
    }
    std::vector<double>& seeks() { return project.players.player()->seeks; }
    TimelineAxis axis() { return model.axis(width); }

    CoreProject project;
    TimelineEditingModel model{project.timeline,  project.tagLibrary, project.markupModes,
                               project.player,    project.focus,      project.defaults,
                               project.scheduler, project.events};
};

TEST_F(TimelineEditingModelTest, AxisFollowsZoomAndNeverShrinksBelowTheWindow) {
    EXPECT_DOUBLE_EQ(axis().interval, 5);
    EXPECT_DOUBLE_EQ(axis().width, 1000);
    for (int i = 0; i < 4; ++i)
        model.zoomIn();
    EXPECT_EQ(model.zoomText(), "3.0x");
    EXPECT_NEAR(axis().interval, 5.0 / 3, 1e-9);
    EXPECT_DOUBLE_EQ(axis().width, 3000);

    model.magnify(0.1);  // zooming out by a pinch is shown at once, but the axis keeps the width of
                         // the window
    EXPECT_DOUBLE_EQ(axis().width, 1000);
    EXPECT_EQ(model.zoomText(), "1.0x");
    std::vector<double> widths;  // the end of a pinch is one step without an intermediate width
    const auto zooming = model.zoomChanged.observe([&] { widths.push_back(axis().width); });
    model.endMagnify();
    EXPECT_THAT(widths, ElementsAre(1000));
    EXPECT_DOUBLE_EQ(*model.timelineScale, 1.0);
    model.zoomOut();
    EXPECT_DOUBLE_EQ(*model.timelineScale, 1.0);
    model.zoomIn();
    model.zoomOut();
    EXPECT_DOUBLE_EQ(*model.timelineScale, 1.0);

    project.players.player()->setDuration(5);
    EXPECT_DOUBLE_EQ(axis().interval, 0.5);
    project.player.cleanup();
    EXPECT_DOUBLE_EQ(axis().duration, 1);
}

TEST_F(TimelineEditingModelTest, TicksReachTheEndAndAreLimitedToTheSpanInView) {
    const auto all = axisTicks(axis(), 0, width);
    ASSERT_EQ(all.size(), 21u);
    EXPECT_EQ(all.back(), (AxisTick{100, 1000, true}));
    EXPECT_FALSE(all[4].major);
    EXPECT_TRUE(all[5].major);
    EXPECT_EQ(tickText(all[13]), "01:05");
    // The last line must not be missing for steps that have no exact binary representation.
    for (double duration : {100.0, 61.7, 5400.3, 7.0})
        for (double scale : {1.0, 1.5, 3.0, 7.0}) {
            const auto zoomed = TimelineAxis::make(duration, scale, width);
            const double steps = duration / zoomed.interval;
            EXPECT_EQ(axisTicks(zoomed, 0, zoomed.width).size(), std::floor(steps + 1e-9) + 1);
            EXPECT_LE(axisTicks(zoomed, 200, 200 + width).size(), 22u);
        }
}

TEST_F(TimelineEditingModelTest, PlayheadIsAtTheTimeOrAtTheDraggedEdge) {
    project.player.seek(25);
    EXPECT_DOUBLE_EQ(model.playheadX(axis()), 250);
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 40, 60);
    model.beginResize(line, id, ResizeEdge::left, axis());
    EXPECT_TRUE(*project.player.isResizingTag);
    model.changeResize(-50);
    EXPECT_DOUBLE_EQ(model.playheadX(axis()), 350);
    model.endResize();
    EXPECT_FALSE(*project.player.isResizingTag);
    EXPECT_FALSE(model.tagEdgePosition->has_value());
    EXPECT_DOUBLE_EQ(stamp(id).timeStartSeconds, 35);
    EXPECT_DOUBLE_EQ(stamp(id).timeFinishSeconds, 60);
}

TEST_F(TimelineEditingModelTest, LeftEdgeStopsAtTheAxisAndAtThirtyPoints) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 40, 60);
    model.beginResize(line, id, ResizeEdge::left, axis());
    model.changeResize(-401);  // ignored, not clamped
    EXPECT_DOUBLE_EQ(model.resize()->x(), 400);
    EXPECT_FALSE(model.tagEdgePosition->has_value());
    model.changeResize(170);
    model.changeResize(1);
    EXPECT_DOUBLE_EQ(model.resize()->width(), 30);
    model.endResize();
    EXPECT_DOUBLE_EQ(stamp(id).timeStartSeconds, 57);

    // Thirty points can be less than half a second.
    const TimelineAxis wide = model.axis(100 * width);
    const Uuid brief = addStamp(line, 10, 11);
    model.beginResize(line, brief, ResizeEdge::left, wide);
    model.changeResize(960);
    model.endResize();
    EXPECT_NEAR(stamp(brief).timeStartSeconds, 10.5, 1e-9);
}

TEST_F(TimelineEditingModelTest, RightEdgeKeepsWithinTheAxisAndGrowsNarrowStampsByATouch) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 40, 60);
    model.beginResize(line, id, ResizeEdge::right, axis());
    model.changeResize(401);
    EXPECT_DOUBLE_EQ(model.resize()->width(), 200);
    model.changeResize(400);
    EXPECT_DOUBLE_EQ(**model.tagEdgePosition, 1000);
    model.changeResize(-1000);  // not narrower than thirty points
    EXPECT_DOUBLE_EQ(model.resize()->width(), 30);
    model.endResize();
    EXPECT_DOUBLE_EQ(stamp(id).timeFinishSeconds, 43);

    const Uuid narrow = addStamp(line, 10, 11);
    model.beginResize(line, narrow, ResizeEdge::right, axis());
    model.endResize();
    EXPECT_DOUBLE_EQ(stamp(narrow).timeFinishSeconds, 13);
    const Uuid last = addStamp(line, 99, 99.5);
    model.beginResize(line, last, ResizeEdge::right, axis());
    model.endResize();
    EXPECT_DOUBLE_EQ(stamp(last).timeFinishSeconds, 100);
}

TEST_F(TimelineEditingModelTest, SeeksOfADragAreThrottledAndReachItsLastPlace) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 40, 60);
    seeks().clear();
    model.beginResize(line, id, ResizeEdge::right, axis());
    model.changeResize(10);
    project.scheduler.advance(0.020);
    model.changeResize(10);
    project.scheduler.advance(0.014);
    model.changeResize(10);
    EXPECT_THAT(seeks(), ElementsAre(61, 62));
    model.zoomIn();  // the zoom is ignored during the drag of an edge
    EXPECT_DOUBLE_EQ(*model.timelineScale, 1);
    model.endResize();
    project.scheduler.advance(1);
    EXPECT_THAT(seeks(), ElementsAre(61, 62, 63));

    model.beginResize(line, id, ResizeEdge::right, axis());
    model.changeResize(10);
    model.changeResize(10);
    model.cancelGesture();
    project.scheduler.advance(1);
    EXPECT_THAT(seeks(), ElementsAre(61, 62, 63, 64));
}

TEST_F(TimelineEditingModelTest, TheViewFollowsThePlayheadUnlessTheUserHasScrolledAway) {
    EXPECT_EQ(followPlayhead(1990, 2000, 1000, 1000), std::nullopt);  // at the edge, still in view
    EXPECT_EQ(followPlayhead(1999, 2001, 1000, 1000), 1751);
    EXPECT_EQ(followPlayhead(1001, 990, 1000, 1000), 740);  // after a seek back
    EXPECT_EQ(followPlayhead(300, 100, 200, 1000), 0);
    EXPECT_EQ(followPlayhead(2500, 2501, 1000, 1000), std::nullopt);  // the user has scrolled away
    EXPECT_EQ(followPlayhead(2500, 1500, 1000, 1000), std::nullopt);
}

TEST_F(TimelineEditingModelTest, AGestureEndsWithItsStampOrWindow) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 40, 60);
    model.beginResize(line, id, ResizeEdge::right, axis());
    model.changeResize(10);
    model.clickStamp(line, id);  // clicks are ignored while an edge is dragged
    EXPECT_FALSE(project.timeline.selectedStampID->has_value());
    project.timeline.removeStamp(line, id);
    EXPECT_FALSE(model.resize());
    EXPECT_FALSE(*project.player.isResizingTag);
    EXPECT_FALSE(model.tagEdgePosition->has_value());

    const Uuid other = addStamp(line, 1, 2);
    model.beginMove(line, other);
    model.disappear();
    EXPECT_FALSE(model.move());
    EXPECT_DOUBLE_EQ(stamp(other).timeStartSeconds, 1);
}

TEST_F(TimelineEditingModelTest, MovedStampsLandOnTheRowUnderThePointer) {
    const Uuid a = addLine("A");
    const Uuid b = addLine("B");
    const Uuid id = addStamp(a, 40, 60);  // rows: drawings, A, B
    model.beginMove(a, id);
    model.changeMove(-500);
    EXPECT_DOUBLE_EQ(model.move()->offsetY(), -30);
    model.changeMove(500);
    EXPECT_DOUBLE_EQ(model.move()->offsetY(), 30);
    model.endMove(400);  // far below the last row
    EXPECT_TRUE(project.timeline.findLine(a)->stamps.empty());
    ASSERT_EQ(project.timeline.findLine(b)->stamps.size(), 1u);
    const TimelineStamp moved = *project.timeline.findLine(b)->stamps[0];
    EXPECT_NE(moved.id, id);
    EXPECT_DOUBLE_EQ(moved.timeFinishSeconds, 60);

    model.beginMove(b, moved.id);
    model.endMove(29);  // in its own row
    EXPECT_EQ(project.timeline.findLine(b)->stamps[0]->id, moved.id);
    model.beginMove(b, moved.id);
    model.endMove(-1);  // just above its own row
    EXPECT_EQ(project.timeline.findLine(a)->stamps.size(), 1u);
}

TEST_F(TimelineEditingModelTest, HitsFindTheUppermostStampAndTheGripsOfTheSelectedOne) {
    const Uuid line = addLine("A");
    addStamp(line, 10, 30);
    const Uuid upper = addStamp(line, 20, 40);  // overlaps: 19 points high, from 200 to 400
    const TimelineRows& rows = model.rows();
    const double top = 30;  // top of row A, below the drawings
    const auto at = [&](double x, double y, std::optional<Uuid> selected = {}) {
        return rows.hit({x, y}, axis(), selected);
    };
    EXPECT_EQ(at(250, top + 15), (TimelineHit{1, 1, {}}));
    EXPECT_EQ(at(250, top + 4), (TimelineHit{1, 0, {}}));  // above the shorter second stamp
    EXPECT_EQ(at(250, top + 1), (TimelineHit{1, {}, {}}));
    EXPECT_EQ(at(250, 61), std::nullopt);
    EXPECT_EQ(at(250, -1), std::nullopt);
    EXPECT_EQ(at(203, top + 15, upper), (TimelineHit{1, 1, ResizeEdge::left}));
    EXPECT_EQ(at(397, top + 15, upper), (TimelineHit{1, 1, ResizeEdge::right}));
    EXPECT_EQ(at(203, top + 15), (TimelineHit{1, 1, {}}));

    // The grips of a short stamp are beside it.
    const Uuid brief = addStamp(line, 70, 70.1);
    EXPECT_EQ(at(705, top + 15, brief), (TimelineHit{1, 2, {}}));
    EXPECT_EQ(at(695, top + 15, brief), (TimelineHit{1, 2, ResizeEdge::left}));
    EXPECT_EQ(at(712, top + 15, brief), (TimelineHit{1, 2, ResizeEdge::right}));
}

TEST_F(TimelineEditingModelTest, OnlyChangedRowsAreDrawnAgain) {
    const Uuid a = addLine("A");
    addLine("B");
    std::vector<std::vector<std::size_t>> changes;
    const auto observing = model.rowsChanged.observe(
        [&](const std::vector<std::size_t>& rows) { changes.push_back(rows); });
    addStamp(a, 1, 2);
    ASSERT_FALSE(changes.empty());
    EXPECT_THAT(changes.back(), ElementsAre(1));
    EXPECT_EQ(model.rows()[1].levels.size(), 1u);
    addLine("C");
    EXPECT_EQ(changes.back().size(), 4u);
}

TEST_F(TimelineEditingModelTest, DroppedLinesAreInsertedAboveTheirTarget) {
    const Uuid a = addLine("A");
    const Uuid b = addLine("B");
    const Uuid c = addLine("C");
    const std::string drawings = lineNames()[0];
    model.dropLine(a.text(), c);
    EXPECT_THAT(lineNames(), ElementsAre(drawings, "B", "A", "C"));
    model.dropLine(c.text(), b);
    EXPECT_THAT(lineNames(), ElementsAre(drawings, "C", "B", "A"));
    model.dropLine(a.text(), a);
    model.dropLine("not a line", b);
    model.dropLine(Uuid::random().text(), b);
    EXPECT_THAT(lineNames(), ElementsAre(drawings, "C", "B", "A"));
    model.dropLine(c.text(), {});  // below all lines
    EXPECT_THAT(lineNames(), ElementsAre(drawings, "B", "A", "C"));
    model.dropLine(c.text(), b);
    model.moveLineBy(a, +1);
    model.moveLineBy(c, +1);
    EXPECT_THAT(lineNames(), ElementsAre(drawings, "B", "C", "A"));
    model.moveLineBy(a, -1);
    EXPECT_THAT(lineNames(), ElementsAre(drawings, "B", "A", "C"));
}

TEST_F(TimelineEditingModelTest, HoverShowsTheFirstStampAtTheTimeAtMostTenTimesASecond) {
    const Uuid line = addLine("Attack");
    addStamp(line, 65, 72.9, "Pass");
    const Uuid later = addStamp(line, 60, 80, "Later");
    project.events.post(events::StampCountsChanged{});
    const auto label = [&] {
        return project.tagLibrary.merged->labels.empty()
                   ? std::string()
                   : project.tagLibrary.merged->labels.front().id;
    }();
    const double row = 30 + 30 + 15;  // header, drawings row, half of the row below
    model.hover(1.0, 700, row, axis());
    EXPECT_EQ(**model.hoveredStampInfo, "Pass\nAttack\n—\n01:05 • 00:07");
    model.hover(1.05, 10, row, axis());
    EXPECT_TRUE(model.hoveredStampInfo->has_value());
    model.hover(1.1, 10, row, axis());
    EXPECT_FALSE(model.hoveredStampInfo->has_value());
    for (const double fromTop : {29.0, 30.0, 45.0, 95.0, 4000.0}) {  // header, drawings, below
        model.hover(2 + fromTop, 700, fromTop, axis());
        EXPECT_FALSE(model.hoveredStampInfo->has_value()) << fromTop;
    }
    model.hover(9000, 790, row, axis());
    EXPECT_TRUE((*model.hoveredStampInfo)->starts_with("Later\nAttack\n"));
    // The pointer does not move while the keyboard is used.
    project.timeline.renameLine(line, "Defence");
    EXPECT_TRUE((*model.hoveredStampInfo)->starts_with("Later\nDefence\n"));
    project.timeline.removeStamp(line, later);
    EXPECT_FALSE(model.hoveredStampInfo->has_value());
    model.hover(9000.5, 700, row, axis());
    EXPECT_TRUE(model.hoveredStampInfo->has_value());
    model.hoverEnded();
    EXPECT_FALSE(model.hoveredStampInfo->has_value());

    ASSERT_FALSE(label.empty());
    const Uuid id = addStamp(line, 1, 2);
    project.timeline.setStampLabels(line, id, {label, "gone"});
    model.hover(9001, 15, row, axis());
    EXPECT_THAT(**model.hoveredStampInfo,
                testing::HasSubstr("\n" + project.tagLibrary.labelById(label)->name + "\n"));
}

TEST_F(TimelineEditingModelTest, TheSelectedStampIsRemovedOnlyOnScreenAndOutsideTextFields) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 1, 2);
    EXPECT_FALSE(model.canRemoveSelectedStamp());
    project.timeline.selectStamp(id);
    project.focus.setTextFieldFocused(true);
    model.removeSelectedStamp();
    EXPECT_TRUE(project.timeline.findStamp(id));
    project.focus.setTextFieldFocused(false);
    model.removeSelectedStamp();
    EXPECT_FALSE(project.timeline.findStamp(id));
    EXPECT_TRUE(model.canRemoveSelectedStamp()) << "the key is taken though the stamp is gone";
    model.removeSelectedStamp();
    model.disappear();
    EXPECT_FALSE(model.canRemoveSelectedStamp());
}

TEST_F(TimelineEditingModelTest, MenusTellAndOfferByModeAndStamp) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 1, 2, "Shot");
    const auto keys = [](const auto& items) {
        std::vector<std::string> result;
        for (const auto& item : items)
            result.push_back(item.key);
        return result;
    };
    auto plain = stampMenu(stamp(id), project.tagLibrary, project.texts);
    EXPECT_THAT(keys(plain),
                ElementsAre("fieldMapTagTitleNoNumber", "timelineButtonDeleteTag",
                            "timelineButtonEditLabels", "timelineButtonEditTimeEvents"));
    EXPECT_EQ(plain[0].text, "fieldMapTagTitleNoNumber Shot");
    TimelineStamp placed = stamp(id);
    placed.position = Point{12, 34.4};
    placed.labels = {"gone"};
    project.texts.set("fieldMapTagPosition", "at {0}, {1}");
    const auto full = stampMenu(placed, project.tagLibrary, project.texts);
    ASSERT_EQ(full.size(), 6u);
    EXPECT_EQ(full[1].text, "at 12, 34");
    EXPECT_FALSE(full[2].action.has_value());

    for (const auto& item : lineMenu(drawingsLineId(), MarkupMode::standard, project.texts))
        EXPECT_FALSE(item.enabled);
}

TEST_F(TimelineEditingModelTest, EditingUsesTheStoredIdsAfterADelay) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 1, 2, "Shot");
    project.timeline.setStampLabels(line, id, {"l1"});
    model.editing.request(line, id, StampEditSheetType::lables);
    EXPECT_FALSE(model.editing.sheetType->has_value());
    project.scheduler.advance(0.1);
    EXPECT_EQ(*model.editing.sheetType, StampEditSheetType::lables);
    const auto labels = model.editing.requested(StampEditSheetType::lables);
    ASSERT_TRUE(labels);
    const auto arguments = model.editing.arguments(*labels);
    ASSERT_TRUE(arguments);
    EXPECT_EQ(arguments->stampName, "Shot");
    EXPECT_FALSE(arguments->tag);
    EXPECT_THAT(arguments->initialIds, ElementsAre("l1"));

    // The next request does not change what the sheet of this one stores.
    model.editing.request(line, id, StampEditSheetType::timeEvents);
    project.scheduler.advance(0.1);
    model.editing.finish(*labels, {"l2", "l3"});
    EXPECT_THAT(stamp(id).labels, ElementsAre("l2", "l3"));
    EXPECT_THAT(stamp(id).timeEvents, testing::IsEmpty());
    EXPECT_FALSE(model.editing.sheetType->has_value());
    model.editing.finish({line, id, StampEditSheetType::timeEvents}, {"e1"});
    EXPECT_THAT(stamp(id).timeEvents, ElementsAre("e1"));
    EXPECT_THAT(stamp(id).labels, ElementsAre("l2", "l3"));

    // The sheet offers what the tag has now, also before the other collections are read again.
    CollectionLists lists;
    lists.tags.resize(1);
    lists.tags[0].id = stamp(id).idTag;
    project.useCollection("Mine", lists);
    CollectionData changed = *project.storage.loadCollection("Mine");
    changed.tags[0].lablesGroup = {"team"};
    project.storage.saveCollection(changed);
    project.events.post(events::CollectionDataChanged{"Mine"});
    EXPECT_THAT(model.editing.arguments(*labels)->tag->lablesGroup, ElementsAre("team"));

    // A missing stamp gives no arguments, for any reason.
    project.timeline.removeStamp(line, id);
    EXPECT_FALSE(model.editing.arguments(*labels));
    EXPECT_FALSE(model.editing.requested(StampEditSheetType::lables));
    for (const char* text : {"", "no id"}) {
        project.defaults.setText(layout::editingLineKey, text);
        EXPECT_FALSE(model.editing.requested(StampEditSheetType::lables));
    }
}

TEST_F(TimelineEditingModelTest, TheKeyboardReachesEveryStampInOrderOfTime) {
    const Uuid a = addLine("A");
    const Uuid b = addLine("B");
    const Uuid late = addStamp(a, 50, 55);
    const Uuid early = addStamp(a, 10, 15);
    const Uuid twin = addStamp(a, 10, 12);
    const Uuid other = addStamp(b, 48, 49);
    addStamp(b, 90, 91);

    model.moveCursorAcross(+1);  // from no row to the first one
    EXPECT_EQ(model.cursor->line, drawingsLineId());
    EXPECT_FALSE(model.cursor->stamp);
    model.moveCursorAcross(+1);
    EXPECT_EQ(*model.cursor, (TimelineCursor{a, early}));
    EXPECT_EQ(*model.hoveredStampInfo, "Pass\nA\n—\n00:10 • 00:05");
    model.moveCursorAlong(+1);
    EXPECT_EQ(model.cursor->stamp, twin);
    model.moveCursorAlong(+1);
    model.moveCursorAlong(+1);
    EXPECT_EQ(model.cursor->stamp, late);
    model.moveCursorAcross(+1);
    EXPECT_EQ(*model.cursor, (TimelineCursor{b, other}));
    model.moveCursorAcross(+5);
    EXPECT_EQ(model.cursor->line, b);
    model.activateCursor();
    EXPECT_EQ(*project.timeline.selectedStampID, other);

    model.nudgeCursor(ResizeEdge::left, -1);
    EXPECT_NEAR(stamp(other).timeStartSeconds, 47.9, 1e-9);
    model.nudgeCursor(ResizeEdge::right, +2);
    EXPECT_NEAR(stamp(other).timeFinishSeconds, 49.2, 1e-9);
    model.moveCursorStamp(-1);
    EXPECT_EQ(model.cursor->line, a);
    EXPECT_EQ(project.timeline.findLine(a)->stamps.back()->id, *model.cursor->stamp);
    EXPECT_FALSE(project.timeline.findStamp(other));
    model.moveCursorStamp(+1);
    EXPECT_EQ(model.cursor->line, b);
    EXPECT_EQ(project.timeline.findLine(b)->stamps.back()->id, *model.cursor->stamp);
    model.moveCursorStamp(+1);
    EXPECT_EQ(model.cursor->line, b) << "there is no line below";
}

TEST_F(TimelineEditingModelTest, ModesAndVeilsFollowTheEventsWhileOnScreen) {
    EXPECT_TRUE(model.timelinesEnabled());
    project.events.post(events::EditorModeChanged{true});
    EXPECT_FALSE(model.timelinesEnabled());
    project.events.post(events::EditorModeChanged{});  // without a flag
    EXPECT_FALSE(model.timelinesEnabled());
    model.setMode(MarkupMode::tagBased);
    EXPECT_EQ(*model.markupMode, MarkupMode::tagBased);
    model.disappear();
    model.setMode(MarkupMode::standard);
    EXPECT_EQ(*model.markupMode, MarkupMode::tagBased);
}

}  // namespace
}  // namespace tembrix
