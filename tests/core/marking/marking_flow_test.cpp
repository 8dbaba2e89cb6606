#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/marking/stamp_items_selection.h"
#include "core/storage/data_layout.h"
#include "fakes/marking_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(StampTimesTest, OrdinaryPressKeepsItsLengthAtTheStartAndIsCutAtTheEnd) {
    const Tag tag = MarkingProject::tag("pass");
    EXPECT_EQ(ordinaryStampTimes(tag, 2, 100), (StampTimes{0, 8}));
    EXPECT_EQ(ordinaryStampTimes(tag, 50, 100), (StampTimes{45, 53}));
    EXPECT_EQ(ordinaryStampTimes(tag, 98.5, 100), (StampTimes{93.5, 100}));
    // A stamp past the end of the video has finish < start and is kept.
    EXPECT_EQ(ordinaryStampTimes(tag, 200, 100), (StampTimes{195, 100}));
}

TEST(StampTimesTest, IntervalIsProperWhicheverPressCameFirstInTheVideo) {
    Tag tag = MarkingProject::tag("phase");
    tag.defaultTimeBefore = 2;
    tag.defaultTimeAfter = 1;
    EXPECT_EQ(intervalStampTimes(tag, 10, 20, 100), (StampTimes{8, 21}));
    EXPECT_EQ(intervalStampTimes(tag, 20, 10, 100), (StampTimes{11, 18}));
    EXPECT_EQ(intervalStampTimes(tag, 1, 99.5, 100), (StampTimes{0, 100}));
}

class MarkingFlowTest : public testing::Test {
  protected:
    void press(const std::string& id) {
        project.flow.handleTagTap(project.known(id));
        project.scheduler.run();
    }
    MarkingProject project;
    MarkingFlow& flow = project.flow;
    StillPlayhead& playhead = project.playhead;
};

TEST_F(MarkingFlowTest, AnOrdinaryPressPausesMakesAStampAndResumes) {
    const Uuid line = project.addLine("Attack");
    project.tagLibrary.toggleTimeEvent("half2");
    project.tagLibrary.toggleTimeEvent("half1");
    playhead.time = 50;
    press("pass");

    ASSERT_THAT(project.stamps(), SizeIs(1));
    const TimelineStamp stamp = project.stamps()[0];
    EXPECT_EQ(project.timeline.findStamp(stamp.id)->line->id, line);
    EXPECT_EQ(stamp.idTag, "pass");
    EXPECT_EQ(stamp.primaryID, "pass");
    EXPECT_EQ(stamp.colorHex, "FF0000");
    EXPECT_EQ(stamp.label, "Tag pass");
    EXPECT_EQ(stamp.timeStartSeconds, 45);
    EXPECT_EQ(stamp.timeFinishSeconds, 53);
    EXPECT_THAT(stamp.labels, IsEmpty());
    EXPECT_THAT(stamp.timeEvents, testing::UnorderedElementsAre("half1", "half2"));
    EXPECT_EQ(stamp.isActiveForMapView, false);
    EXPECT_FALSE(stamp.position);
    EXPECT_EQ(flow.tagCounts->at("pass"), 1);

    EXPECT_FALSE(playhead.playing);
    project.scheduler.advance(0.09);
    EXPECT_FALSE(playhead.playing);
    project.scheduler.advance(0.02);
    EXPECT_TRUE(playhead.playing);

    // Armed events apply to the next stamps as well. With a speed of 0, playback does not resume.
    playhead.speed = 0;
    press("pass");
    project.scheduler.advance(1);
    EXPECT_THAT(project.stamps()[1].timeEvents, SizeIs(2));
    EXPECT_FALSE(playhead.playing);

    playhead.duration = 0;  // without a video every stamp ends in the first second
    press("pass");
    EXPECT_EQ(project.stamps()[2].timeFinishSeconds, 1);
}

TEST_F(MarkingFlowTest, CountsFollowEditsInOtherWindows) {
    const Uuid line = project.addLine("Attack");
    press("pass");
    press("pass");
    project.timeline.removeStamp(line, project.stamps()[0].id);
    EXPECT_EQ(flow.tagCounts->at("pass"), 1);
    project.timeline.deleteLine(line);
    EXPECT_FALSE(flow.tagCounts->contains("pass"));
}

TEST_F(MarkingFlowTest, APanelOpenedDuringALoadListsTheCollectionsAndWaits) {
    flow.disappear();
    project.index.addOrUpdateCollection("other", "Other");
    project.events.post(events::CollectionDataChanged{});
    flow.appear();
    EXPECT_EQ(flow.userCollections->back().name, "Other");
    EXPECT_TRUE(*flow.isLoadingCollections);
    project.scheduler.run();
    EXPECT_FALSE(*flow.isLoadingCollections);
}

TEST_F(MarkingFlowTest, WithoutASelectedLineNothingIsMarkedAndTheVideoResumes) {
    ASSERT_FALSE(*project.timeline.selectedLineID);
    press("pass");
    project.scheduler.advance(0.2);
    EXPECT_THAT(project.stamps(), IsEmpty());
    EXPECT_TRUE(playhead.playing);

    press("goal");
    EXPECT_TRUE(flow.showLabelSheet.get());
    EXPECT_EQ(flow.sheetContent(), MarkingFlow::SheetContent::noTimeline);
    // The message blocks no hot keys.
    flow.handleTagHotkey(project.known("phase"));
    EXPECT_TRUE(flow.isIntervalOpen("phase"));
    flow.cancelSheet();
    project.timeline.selectLine(Uuid::random());
    press("goal");
    EXPECT_EQ(flow.sheetContent(), MarkingFlow::SheetContent::noTimeline);
}

TEST_F(MarkingFlowTest, ALineThatBecomesSelectedTakesTheMessageAwayAndTheNextPressMarks) {
    flow.handleTagHotkey(project.known("phase"));
    for (const bool adds : {true, false}) {
        project.timeline.selectLine(Uuid::random());  // an unknown one
        flow.handleTagHotkey(project.known("goal"));
        ASSERT_TRUE(flow.showLabelSheet.get());
        ASSERT_EQ(flow.sheetContent(), MarkingFlow::SheetContent::noTimeline);
        if (adds)
            project.addLine("Attack");
        else
            project.timeline.selectLine(project.timeline.lines->back()->id);
        EXPECT_FALSE(flow.showLabelSheet.get());
        EXPECT_TRUE(playhead.playing);
        const auto before = project.stamps().size();
        flow.handleTagHotkey(project.known("pass"));
        EXPECT_EQ(project.stamps().size(), before + 1);
    }
    flow.handleTagHotkey(project.known("goal"));
    EXPECT_TRUE(flow.showLabelSheet.get());
    EXPECT_EQ(flow.sheetContent(), MarkingFlow::SheetContent::selection);
    project.addLine("Defence");
    EXPECT_TRUE(flow.showLabelSheet.get()) << "a question is not a message";
    EXPECT_TRUE(flow.isIntervalOpen("phase"));
}

TEST_F(MarkingFlowTest, TagBasedModeMakesALinePerTagAndLeavesTheSelection) {
    project.addLine("Attack");
    const auto selected = project.timeline.selectedLineID.get();
    project.markupModes.setMarkupMode(MarkupMode::tagBased);
    press("pass");
    press("pass");
    press("phase");
    press("phase");
    const auto& lines = *project.timeline.lines;
    ASSERT_THAT(lines, SizeIs(4));  // drawings, the user's line, one line per tag
    EXPECT_EQ(lines[2]->name, "Tag pass");
    EXPECT_EQ(lines[2]->tagIdForMode, "pass");
    EXPECT_THAT(lines[2]->stamps, SizeIs(2));
    EXPECT_EQ(project.timeline.selectedLineID.get(), selected);

    // A tag that is not in the library has no line.
    flow.handleTagTap(MarkingProject::tag("unknown"));
    EXPECT_THAT(*project.timeline.lines, SizeIs(4));
    EXPECT_THAT(project.stamps(), SizeIs(3));

    // A tag that was just added to the collection has, before the other collections are read again.
    CollectionData changed = *project.storage.loadCollection("MINE");
    changed.tags.push_back(MarkingProject::tag("new"));
    project.storage.saveCollection(changed);
    project.events.post(events::CollectionDataChanged{MarkingProject::collectionName});
    ASSERT_FALSE(project.tagLibrary.tagById("new"));
    flow.handleTagTap(project.tagLibrary.active->tags.back());
    EXPECT_EQ(project.timeline.lines->back()->name, "Tag new");
    EXPECT_THAT(project.timeline.lines->back()->stamps, SizeIs(1));
}

TEST_F(MarkingFlowTest, LabelsAreAskedForBeforeTheStampAndCancellingLeavesNone) {
    project.addLine("Attack");
    playhead.time = 20;
    press("goal");
    EXPECT_TRUE(flow.showLabelSheet.get());
    EXPECT_FALSE(playhead.playing);
    EXPECT_THAT(project.stamps(), IsEmpty());
    // The time of the stamp is used, not that of the press.
    playhead.time = 30;
    flow.completeSheet({"own"});
    ASSERT_THAT(project.stamps(), SizeIs(1));
    EXPECT_THAT(project.stamps()[0].labels, ElementsAre("own"));
    EXPECT_EQ(project.stamps()[0].timeStartSeconds, 25);
    EXPECT_TRUE(flow.showLabelSheet.get());
    project.scheduler.advance(0.11);
    EXPECT_FALSE(flow.showLabelSheet.get());
    EXPECT_TRUE(playhead.playing);

    press("goal");
    playhead.speed = 0;
    flow.cancelSheet();
    EXPECT_THAT(project.stamps(), SizeIs(1));
    EXPECT_TRUE(playhead.playing);  // regardless of its earlier state
    EXPECT_FALSE(flow.showLabelSheet.get());

    Tag dangling = project.known("goal");
    dangling.lablesGroup = {"no such group"};
    EXPECT_FALSE(flow.asksForLabels(dangling));
}

TEST_F(MarkingFlowTest, APressRightAfterAStampIsNotOvertakenByItsTimers) {
    project.addLine("Attack");
    press("goal");
    flow.completeSheet({});
    project.scheduler.advance(0.05);
    press("goal");
    project.scheduler.advance(1);
    EXPECT_TRUE(flow.showLabelSheet.get());
    EXPECT_FALSE(playhead.playing);
}

TEST_F(MarkingFlowTest, ASecondTagStruckBeforeTheSheetIsUpDoesNotTakeItsAnswer) {
    project.addLine("Attack");
    flow.handleTagHotkey(project.known("goal"));
    flow.handleTagHotkey(project.known("pass"));
    flow.completeSheet({"own"});
    ASSERT_THAT(project.stamps(), SizeIs(1));
    EXPECT_EQ(project.stamps()[0].idTag, "goal");
}

TEST_F(MarkingFlowTest, IntervalsOpenAndCloseEachByItself) {
    project.addLine("Attack");
    playhead.time = 10;
    press("phase");
    EXPECT_TRUE(playhead.playing);
    playhead.time = 15;
    press("other");
    EXPECT_TRUE(flow.isIntervalOpen("phase"));
    EXPECT_TRUE(flow.isIntervalOpen("other"));
    EXPECT_THAT(project.stamps(), IsEmpty());

    playhead.time = 20;
    press("phase");
    ASSERT_THAT(project.stamps(), SizeIs(1));
    EXPECT_EQ(project.stamps()[0].timeStartSeconds, 5);
    EXPECT_EQ(project.stamps()[0].timeFinishSeconds, 23);
    EXPECT_FALSE(flow.isIntervalOpen("phase"));
    EXPECT_TRUE(flow.isIntervalOpen("other"));
    press("phase");
    EXPECT_TRUE(flow.isIntervalOpen("phase"));
    EXPECT_THAT(project.stamps(), SizeIs(1));
}

TEST_F(MarkingFlowTest, TheMouseClosesAnIntervalLaterTheKeyboardAtOnce) {
    project.addLine("Attack");
    press("phase");
    flow.handleTagTap(project.known("phase"));
    EXPECT_THAT(project.stamps(), IsEmpty());
    project.scheduler.run();
    EXPECT_THAT(project.stamps(), SizeIs(1));

    project.events.post(events::ShowLabelSheet{project.known("phase")});
    project.events.post(events::ShowLabelSheet{project.known("phase")});
    EXPECT_THAT(project.stamps(), SizeIs(2));
}

TEST_F(MarkingFlowTest, IntervalWithLabelsCountsToTheEndOfTheSheetAndCancellingDropsIt) {
    project.addLine("Attack");
    Tag tag = project.known("phase");
    tag.lablesGroup = {"team"};
    playhead.time = 10;
    flow.handleTagHotkey(tag);
    playhead.time = 20;
    flow.handleTagHotkey(tag);
    EXPECT_TRUE(flow.showLabelSheet.get());
    EXPECT_TRUE(flow.isIntervalOpen("phase"));
    playhead.time = 40;
    flow.completeSheet({"away"});
    ASSERT_THAT(project.stamps(), SizeIs(1));
    EXPECT_EQ(project.stamps()[0].timeFinishSeconds, 43);
    EXPECT_THAT(*flow.activeIntervalTags, IsEmpty());

    flow.completeSheet({"away"});  // no longer open, so no stamp is made
    EXPECT_THAT(project.stamps(), SizeIs(1));

    flow.handleTagHotkey(tag);
    flow.handleTagHotkey(tag);
    flow.cancelSheet();
    EXPECT_FALSE(flow.isIntervalOpen("phase"));
    EXPECT_THAT(project.stamps(), SizeIs(1));
}

TEST_F(MarkingFlowTest, AnEditorOnThePlayerSilencesTheMouseButNotTheKeyboard) {
    project.addLine("Attack");
    project.events.post(events::EditorModeChanged{true});
    press("pass");
    flow.handleTimeEventTap("half1");
    EXPECT_THAT(project.stamps(), IsEmpty());
    EXPECT_THAT(*project.tagLibrary.selectedTimeEvents, IsEmpty());
    project.events.post(events::EditorModeChanged{});  // without a flag
    press("pass");
    EXPECT_THAT(project.stamps(), IsEmpty());
    flow.handleTagHotkey(project.known("pass"));
    EXPECT_THAT(project.stamps(), SizeIs(1));
}

TEST_F(MarkingFlowTest, MapTagAsksForAPlaceAndStaysStoppedWithoutOne) {
    project.addLine("Attack");
    press("map");
    EXPECT_THAT(project.fieldMap.opened, ElementsAre(toBytes("picture")));
    project.scheduler.advance(1);
    EXPECT_THAT(project.stamps(), IsEmpty());  // the window may be closed without an answer
    EXPECT_FALSE(playhead.playing);

    press("map");
    project.fieldMap.answer({0.25, 0.5});
    ASSERT_THAT(project.stamps(), SizeIs(1));
    EXPECT_EQ(project.stamps()[0].position, (Point{25, 25}));
    EXPECT_EQ(project.stamps()[0].isActiveForMapView, true);
    project.scheduler.advance(0.2);
    EXPECT_TRUE(playhead.playing);

    // The field was changed, so the next question uses the new one.
    project.saveCollection(200);
    project.events.post(events::CollectionDataChanged{MarkingProject::collectionName});
    press("map");
    project.fieldMap.answer({0.25, 0.5});
    EXPECT_EQ(project.stamps()[1].position, (Point{50, 25}));

    // A collection without a field: the stamp has no position, and playback does not resume.
    flow.switchToStandardCollection(project.tagLibrary.standardCollections->front().name);
    project.scheduler.run();
    press("map");
    ASSERT_THAT(project.stamps(), SizeIs(3));
    EXPECT_FALSE(project.stamps()[2].position);
    EXPECT_EQ(project.stamps()[2].isActiveForMapView, false);
    project.scheduler.advance(1);
    EXPECT_FALSE(playhead.playing);
    EXPECT_THAT(project.fieldMap.opened, SizeIs(3));
}

TEST_F(MarkingFlowTest, IntervalKeepsItsTimesThroughTheMapQuestion) {
    project.addLine("Attack");
    Tag tag = project.known("phase");
    tag.mapEnabled = true;
    playhead.time = 10;
    flow.handleTagHotkey(tag);
    playhead.time = 20;
    flow.handleTagHotkey(tag);
    project.scheduler.run();
    playhead.time = 90;
    project.fieldMap.answer({1, 1});
    EXPECT_EQ(project.stamps()[0].timeStartSeconds, 5);
    EXPECT_EQ(project.stamps()[0].timeFinishSeconds, 23);
    EXPECT_EQ(project.stamps()[0].position, (Point{100, 50}));
}

TEST_F(MarkingFlowTest, APressIsNotLostWhereNoMapCanBeShown) {
    project.addLine("Attack");
    project.fieldMap.available = false;
    flow.handleTagTap(project.known("map"));
    project.scheduler.run();
    EXPECT_TRUE(project.fieldMap.opened.empty());
    ASSERT_EQ(project.stamps().size(), 1U);
    EXPECT_FALSE(project.stamps()[0].position);
}

TEST_F(MarkingFlowTest, ClosingThePanelDropsWhatIsUnderWay) {
    project.addLine("Attack");
    std::function<void(Point)> answer;
    {
        MarkingFlow panel(project.timeline, project.tagLibrary, project.markupModes,
                          project.collections, playhead, project.fieldMap, project.scheduler,
                          project.events);
        panel.appear();
        panel.handleTagTap(project.known("map"));
        project.scheduler.run();
        answer = project.fieldMap.answer;
        panel.handleTagTap(project.known("phase"));
        panel.handleTagTap(project.known("phase"));
    }
    project.scheduler.advance(1);
    answer({0, 0});
    EXPECT_THAT(project.stamps(), IsEmpty());
}

TEST_F(MarkingFlowTest, PanelFollowsModesCountsGroupsAndCollections) {
    EXPECT_THAT(*flow.expandedGroups, ElementsAre("group"));
    EXPECT_EQ(flow.markupMode.get(), MarkupMode::standard);
    project.defaults.setText(layout::markupModeKey, "tagBased");
    project.events.post(events::MarkupModeChanged{});
    EXPECT_EQ(flow.markupMode.get(), MarkupMode::tagBased);
    EXPECT_THAT(*flow.userCollections, ElementsAre(CollectionInfo{"MINE", "Mine"}));

    // Folded groups remain folded when their collection is loaded again.
    flow.toggleGroup("group");
    project.events.post(events::CollectionDataChanged{MarkingProject::collectionName});
    EXPECT_THAT(*flow.expandedGroups, IsEmpty());

    const auto standard = project.tagLibrary.standardCollections->front();
    press("phase");
    flow.switchToStandardCollection(standard.name);
    EXPECT_TRUE(project.tagLibrary.currentCollectionType->isUser());
    press("phase");
    project.events.post(events::CollectionsLoadingStarted{});
    flow.switchToStandardCollection(standard.name);
    EXPECT_TRUE(project.tagLibrary.currentCollectionType->isUser());
    project.events.post(events::CollectionsLoadingFinished{});
    flow.switchToStandardCollection(standard.name);
    EXPECT_FALSE(project.tagLibrary.currentCollectionType->isUser());
    EXPECT_THAT(*flow.expandedGroups, SizeIs(standard.lists.tagGroups.size()));
}

TEST(StampItemsSelectionTest, OffersTheGroupsOfTheTagAndFollowsItsHotKeys) {
    MarkingProject project;
    {
        StampItemsSelection::Arguments arguments;
        arguments.tag = project.known("goal");
        arguments.initialIds = {"away", "of another collection"};
        StampItemsSelection sheet(arguments, project.tagLibrary, project.hotkeys, project.events);
        ASSERT_THAT(sheet.sections(), SizeIs(1));
        ASSERT_THAT(sheet.sections()[0].items, SizeIs(2));  // the missing label is left out
        EXPECT_EQ(sheet.sections()[0].items[0].name, "Own");
        EXPECT_EQ(sheet.sections()[0].items[0].hotkey, "1");
        EXPECT_TRUE(project.hotkeys.isLabelHotkeyMode.get());

        project.events.post(events::LabelHotkeyPressed{"own", "goal"});
        project.events.post(events::LabelHotkeyPressed{"left", "pass"});
        EXPECT_THAT(sheet.ids(), ElementsAre("away", "of another collection", "own"));
        project.events.post(events::LabelHotkeyPressed{"own", "goal"});
        EXPECT_THAT(sheet.ids(), ElementsAre("away", "of another collection"));
    }
    EXPECT_FALSE(project.hotkeys.isLabelHotkeyMode.get());

    // A group or label missing in the tag's own collection is not replaced by that of another one.
    CollectionLists other;
    other.labelGroups = {{"elsewhere", "Elsewhere", {"gone"}}};
    other.labels = {{"gone", "Another collection's", ""}};
    project.addCollection("Other", other);
    for (const bool isActive : {true, false}) {
        StampItemsSelection::Arguments arguments;
        arguments.tag = project.known("goal");
        arguments.tag->lablesGroup = {"elsewhere"};
        if (!isActive)
            arguments.tag->id = "of another collection";
        const StampItemsSelection sheet(arguments, project.tagLibrary, project.hotkeys,
                                        project.events);
        ASSERT_THAT(sheet.sections(), SizeIs(isActive ? 0 : 1));
        if (!isActive) {
            EXPECT_EQ(sheet.sections()[0].items.at(0).name, "Another collection's");
        }
    }

    StampItemsSelection all({}, project.tagLibrary, project.hotkeys, project.events);
    ASSERT_THAT(all.sections(), SizeIs(2));
    EXPECT_EQ(all.sections()[0].title, "Team");  // sorted by name
    EXPECT_THAT(all.sections()[0].items, SizeIs(2));
}

TEST(StampItemsSelectionTest, OfTwoSheetsTheNewerOneHasTheKeys) {
    MarkingProject project;
    StampItemsSelection::Arguments arguments;
    arguments.tag = project.known("goal");
    StampItemsSelection first(arguments, project.tagLibrary, project.hotkeys, project.events);
    {
        StampItemsSelection second(arguments, project.tagLibrary, project.hotkeys, project.events);
        project.events.post(events::LabelHotkeyPressed{"own", "goal"});
        EXPECT_THAT(first.ids(), IsEmpty());
        EXPECT_THAT(second.ids(), ElementsAre("own"));
    }
    EXPECT_TRUE(project.hotkeys.isLabelHotkeyMode.get());
    project.events.post(events::LabelHotkeyPressed{"away", "goal"});
    EXPECT_THAT(first.ids(), ElementsAre("away"));
}

}  // namespace
}  // namespace tembrix
