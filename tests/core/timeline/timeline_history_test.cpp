#include "core/timeline/timeline_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <set>

#include "fakes/marking_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Drawings with an in-memory list of their files.
struct DrawingFolder final : DrawingLinks {
    std::set<std::string> files;
    std::vector<Uuid> checked;
    void deleteDrawingFiles(const std::string& name) override { files.erase(name); }
    void checkLinksAfterResize(const Uuid& stamp, double, double) override {
        checked.push_back(stamp);
    }
};

class TimelineHistoryTest : public testing::Test {
  protected:
    TimelineHistoryTest() { store.setDrawingLinks(&drawings); }

    TimelineStamp addStamp(const Uuid& line, double start = 1, const std::string& tag = "pass") {
        TimelineStamp stamp;
        stamp.id = Uuid::random();
        stamp.idTag = tag;
        stamp.label = tag;
        stamp.timeStartSeconds = start;
        stamp.timeFinishSeconds = start + 5;
        store.appendStamp(line, stamp);
        return stamp;
    }
    TimelineStamp addDrawing(const std::string& name) {
        drawings.files.insert(name);
        TimelineStamp stamp;
        stamp.id = Uuid::random();
        stamp.idTag = "screenshot_" + name + "_" + freshId();
        stamp.label = name;
        stamp.timeFinishSeconds = 6;
        store.appendStamp(drawingsLineId(), stamp);
        return stamp;
    }
    TimelineLines stored() {
        return project.storage.loadTimeline(project.library.videosData().front().id);
    }

    MarkingProject project;
    TimelineDataManager& store = project.timeline;
    DrawingFolder drawings;
    TimelineHistory history{store};
};

TEST_F(TimelineHistoryTest, APressIsOneStepEvenIfItMakesALine) {
    project.markupModes.setMarkupMode(MarkupMode::tagBased);
    const TimelineLines before = *store.lines;
    project.flow.handleTagTap(project.known("pass"));
    const TimelineLines after = *store.lines;
    EXPECT_TRUE(history.canUndo.get());
    EXPECT_EQ(history.undoName.get(), "timelineStepMark");
    history.undo();
    EXPECT_EQ(*store.lines, before);
    EXPECT_EQ(stored(), before);
    EXPECT_TRUE(project.flow.tagCounts->empty());
    EXPECT_FALSE(history.canUndo.get());
    EXPECT_EQ(history.redoName.get(), "timelineStepMark");
    history.redo();
    EXPECT_EQ(*store.lines, after);
    EXPECT_EQ(stored(), after);
    EXPECT_EQ(project.flow.tagCounts->at("pass"), 1);
    EXPECT_FALSE(history.canRedo.get());
}

TEST_F(TimelineHistoryTest, TheSelectionIsRestoredWithTheLineUnlessTheUserHasChangedIt) {
    const Uuid a = project.addLine("A");
    const Uuid b = project.addLine("B");
    history.undo();
    EXPECT_EQ(store.selectedLineID.get(), a);
    history.redo();
    EXPECT_EQ(store.selectedLineID.get(), b);
    store.deleteLine(b);
    history.undo();
    EXPECT_EQ(store.selectedLineID.get(), b);
    store.selectLine(a);
    history.undo();  // adding line B is undone
    EXPECT_EQ(store.selectedLineID.get(), a);
}

TEST_F(TimelineHistoryTest, WhatChangesNothingIsNoStepAndANewEditEndsRedo) {
    const Uuid line = project.addLine("A");
    const TimelineStamp stamp = addStamp(line);
    history.clear();
    store.renameLine(line, "A");
    store.setStampLabels(line, stamp.id, {});
    store.setStampTimeEvents(line, Uuid::random(), {"x"});
    store.removeStamp(line, Uuid::random());
    store.moveLine(line, line);
    EXPECT_FALSE(history.canUndo.get());
    store.setStampLabels(line, stamp.id, {"x"});
    EXPECT_EQ(history.undoName.get(), "timelineStepEditLabels");
    history.undo();
    EXPECT_TRUE(history.canRedo.get());
    store.renameLine(line, "B");
    EXPECT_FALSE(history.canRedo.get());
}

TEST_F(TimelineHistoryTest, AnotherProjectOrAnotherTimelineEndsTheHistory) {
    project.addLine("A");
    store.replaceLines(*store.lines);
    EXPECT_FALSE(history.canUndo.get());
    project.addLine("B");
    project.openVideo("second.mp4");
    EXPECT_FALSE(history.canUndo.get());
    EXPECT_EQ(history.undoName.get(), std::nullopt);
}

TEST_F(TimelineHistoryTest, DrawingsAreNeverBroughtBackWithoutTheirFiles) {
    const Uuid line = project.addLine("A");
    const TimelineStamp pass = addStamp(line);
    const TimelineStamp kept = addDrawing("Kept");
    const TimelineStamp gone = addDrawing("Gone");
    EXPECT_EQ(history.undoName.get(), "timelineStepMark");  // of the pass, not of the drawing

    // Resizing the stamp of a drawing is a step. After the drawing was deleted, that step is empty
    // and the previous one is undone instead.
    store.updateStampTimes(drawingsLineId(), gone.id, std::nullopt, 9.0);
    EXPECT_EQ(history.undoName.get(), "timelineStepResizeTag");
    store.removeStamp(drawingsLineId(), gone.id);
    EXPECT_THAT(drawings.files, ElementsAre("Kept"));
    history.undo();
    EXPECT_FALSE(store.findStamp(gone.id));
    EXPECT_FALSE(store.findStamp(pass.id));
    history.redo();
    EXPECT_TRUE(store.findStamp(pass.id));
    EXPECT_FALSE(history.canRedo.get());
    EXPECT_THAT(store.lines->front()->stamps, SizeIs(1));

    // If the stamp of a drawing was moved to another line and deleted with it, it is restored.
    store.moveStamp({drawingsLineId(), kept.id}, line);
    store.deleteLine(line);
    history.undo();
    EXPECT_THAT(store.findLine(line)->stamps, SizeIs(2));
    history.undo();
    EXPECT_EQ(*store.findStamp(kept.id)->stamp, kept);
    EXPECT_EQ(store.findStamp(kept.id)->line->id, drawingsLineId());
    EXPECT_EQ(stored(), *store.lines);
}

TEST_F(TimelineHistoryTest, AMoveIsNotUndoneByHalfAfterItsDrawingWasDeleted) {
    const Uuid line = project.addLine("A");
    const TimelineStamp pass = addStamp(line);
    const TimelineStamp moved = addDrawing("Corner");
    TimelineStamp twin = moved;  // as an imported document may repeat it
    twin.id = Uuid::random();
    store.appendStamp(drawingsLineId(), twin);
    store.moveStamp({drawingsLineId(), moved.id}, line);
    const Uuid copy = store.findLine(line)->stamps.back()->id;
    store.removeStamp(drawingsLineId(), twin.id);
    const TimelineLines before = *store.lines;

    // The move cannot be undone any more, so the press goes to the mark before it.
    history.undo();
    EXPECT_FALSE(store.findStamp(pass.id));
    ASSERT_TRUE(store.findStamp(copy));
    history.redo();
    EXPECT_EQ(*store.lines, before);

    store.deleteLine(line);
    history.undo();
    ASSERT_THAT(store.findLine(line)->stamps, SizeIs(1));
    EXPECT_EQ(store.findLine(line)->stamps[0]->id, pass.id);
}

// Nothing deletes the files of drawings here: such stamps come with imported documents.
TEST_F(TimelineHistoryTest, StampsOfDrawingsWhoseFilesRemainAreUndoneLikeOthers) {
    store.setDrawingLinks(nullptr);
    const Uuid line = project.addLine("A");
    const TimelineStamp drawing = addDrawing("Corner");
    const TimelineLines drawn = *store.lines;
    store.moveStamp({drawingsLineId(), drawing.id}, line);
    const TimelineLines moved = *store.lines;
    store.deleteLine(line);
    history.undo();
    EXPECT_EQ(*store.lines, moved);
    history.undo();
    EXPECT_EQ(*store.lines, drawn);
    EXPECT_EQ(stored(), drawn);
    history.redo();
    EXPECT_EQ(*store.lines, moved);
    store.removeStamp(line, store.findLine(line)->stamps[0]->id);
    history.undo();
    EXPECT_EQ(*store.lines, moved);
    history.undo();
    store.removeStamp(drawingsLineId(), drawing.id);
    history.undo();
    EXPECT_EQ(*store.lines, drawn);
}

TEST_F(TimelineHistoryTest, LinksAreCheckedAgainWhenTimesGoBack) {
    const Uuid line = project.addLine("A");
    const Uuid id = addStamp(line).id;
    store.updateStampTimes(line, id, std::nullopt, 50.0);
    drawings.checked.clear();
    history.undo();
    EXPECT_THAT(drawings.checked, ElementsAre(id));
}

TEST_F(TimelineHistoryTest, RestoredStampsAndLinesHaveTheCurrentNameOfTheirTag) {
    project.markupModes.setMarkupMode(MarkupMode::tagBased);
    project.flow.handleTagTap(project.known("pass"));
    const Uuid line = store.lines->back()->id;
    const Uuid stamp = store.lines->back()->stamps[0]->id;
    store.renameLine(line, "My passes");
    store.deleteLine(line);
    project.events.post(events::TagUpdated{"pass", "Pass on"});
    history.undo();
    EXPECT_EQ(store.findLine(line)->name, "Pass on");
    EXPECT_EQ(store.findStamp(stamp)->stamp->label, "Pass on");
    history.undo();  // nothing is left to undo of the renaming, so the previous step is undone
    EXPECT_FALSE(store.findLine(line));
    history.redo();
    EXPECT_EQ(store.findLine(line)->name, "Pass on");
}

TEST_F(TimelineHistoryTest, RenamingATagLeavesRestoredStampsOfOtherTagsAlone) {
    const Uuid line = project.addLine("A");
    const Uuid pass = addStamp(line, 1, "pass").id;
    const Uuid phase = addStamp(line, 2, "phase").id;
    store.removeStamp(line, pass);
    store.removeStamp(line, phase);
    project.events.post(events::TagUpdated{"pass", "Pass on"});
    history.undo();
    history.undo();
    EXPECT_EQ(store.findStamp(pass)->stamp->label, "Pass on");
    EXPECT_EQ(store.findStamp(phase)->stamp->label, "phase");
}

TEST_F(TimelineHistoryTest, ChangesMadeBesideTheStepsSurviveThem) {
    const Uuid line = project.addLine("A");
    const Uuid id = addStamp(line).id;
    store.setStampLabels(line, id, {"x"});
    auto lines = *store.lines;
    lines[1].write().stamps[0].write().isActiveForMapView = true;
    auto edit = store.begin();
    edit.replaceLines(std::move(lines));
    EXPECT_TRUE(store.commit(edit));
    history.undo();
    history.undo();
    history.redo();
    EXPECT_EQ(store.findStamp(id)->stamp->isActiveForMapView, true);
    EXPECT_THAT(store.findStamp(id)->stamp->labels, IsEmpty());
}

TEST_F(TimelineHistoryTest, TheOldestStepsGoWhenThereAreTooMany) {
    const Uuid line = project.addLine("A");
    for (std::size_t i = 0; i < TimelineHistory::maxSteps + 5; ++i)
        store.renameLine(line, std::to_string(i));
    std::size_t steps = 0;
    for (; history.canUndo.get(); ++steps)
        history.undo();
    EXPECT_GE(steps, 1000u);
    EXPECT_EQ(steps, TimelineHistory::maxSteps);
    EXPECT_EQ(store.findLine(line)->name, "4");
}

// Thousands of mixed edits with undo and redo: every state can be restored exactly, and undoing all
// of them restores the first one.
TEST_F(TimelineHistoryTest, UndoingAllGivesBackTheExactFirstState) {
    for (unsigned seed = 0; seed < 6; ++seed) {
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t size) { return std::size_t(random() % size); };
        project.openVideo("video" + std::to_string(seed) + ".mp4");
        for (int i = 0; i < 4; ++i)
            addStamp(project.addLine("Line " + std::to_string(i)), i);
        history.clear();

        using State = std::pair<TimelineLines, std::optional<Uuid>>;
        const auto state = [&] { return State{*store.lines, store.selectedLineID.get()}; };
        std::vector<State> past{state()};  // the states before each step and the current one
        std::size_t present = 0;
        for (int edit = 0; edit < 1500; ++edit) {
            const auto& lines = *store.lines;
            const Uuid line = lines[pick(lines.size())]->id;
            const Uuid other = lines[pick(lines.size())]->id;
            const auto& row = store.findLine(line)->stamps;
            const Uuid stamp = row.empty() ? Uuid::random() : row[pick(row.size())]->id;
            const bool byTag = random() % 2;
            switch (random() % 16) {
                case 0:
                    project.markupModes.setMarkupMode(byTag ? MarkupMode::tagBased
                                                            : MarkupMode::standard);
                    break;
                case 1:
                    store.addLine("New");
                    break;
                case 2:
                    if (random() % 3 == 0)
                        store.deleteLine(line);
                    break;
                case 3:
                    store.renameLine(line, "Renamed " + std::to_string(pick(3)));
                    break;
                case 4:
                    store.moveLine(line, other);
                    break;
                case 5:
                    store.removeStamp(line, stamp);
                    break;
                case 6:
                    store.moveStamp({line, stamp}, other);
                    break;
                case 7:
                    store.setStampLabels(line, stamp, {std::to_string(pick(3))});
                    break;
                case 8:
                    store.setStampTimeEvents(line, stamp, {std::to_string(pick(3))});
                    break;
                case 9:
                    store.updateStampTimes(line, stamp, double(pick(90)), std::nullopt);
                    break;
                case 10:
                    store.updateStampTimes(line, stamp, std::nullopt, double(pick(90)));
                    break;
                case 11:
                    for (std::size_t back = pick(20); back > 0 && present > 0; --back) {
                        history.undo();
                        ASSERT_EQ(state(), past[--present]) << "seed " << seed << " edit " << edit;
                    }
                    continue;
                case 12:
                    for (std::size_t on = pick(20); on > 0 && present + 1 < past.size(); --on) {
                        history.redo();
                        ASSERT_EQ(state(), past[++present]) << "seed " << seed << " edit " << edit;
                    }
                    continue;
                default:
                    project.playhead.time = double(pick(100));
                    project.flow.handleTagHotkey(project.known("pass"));
            }
            if (*store.lines != past[present].first) {
                past.resize(present + 1);
                past.push_back(state());
                ++present;
            }
        }
        for (; history.canUndo.get(); --present)
            history.undo();
        EXPECT_EQ(present, 0u);
        EXPECT_EQ(state(), past.front());
        while (history.canRedo.get())
            history.redo();
        EXPECT_EQ(state(), past.back());
    }
}

}  // namespace
}  // namespace tembrix
