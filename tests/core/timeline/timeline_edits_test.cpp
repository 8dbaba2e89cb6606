#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "core/timeline/timeline_data_manager.h"
#include "core/timeline/timeline_history.h"
#include "core/timeline/timeline_transaction.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

TimelineStamp makeStamp(double start, const std::string& tag = "tag") {
    TimelineStamp stamp;
    stamp.id = Uuid::random();
    stamp.idTag = stamp.label = tag;
    stamp.colorHex = "FF0000";
    stamp.timeStartSeconds = start;
    stamp.timeFinishSeconds = start + 5;
    return stamp;
}

// An open video with two lines of two stamps each; the second line is selected.
class TimelineEditsTest : public testing::Test {
  protected:
    TimelineEditsTest() {
        video = project.openVideo();
        for (Uuid* line : {&a, &b}) {
            store.addLine(line == &a ? "A" : "B");
            *line = store.lines->back()->id;
            store.appendStamp(*line, makeStamp(1));
            store.appendStamp(*line, makeStamp(3));
        }
        first = store.findLine(a)->stamps[0]->id;
        history.clear();
    }

    using State = std::pair<TimelineLines, std::optional<Uuid>>;
    State state() const { return {store.lines.get(), store.selectedLineID.get()}; }
    TimelineLines stored() { return project.storage.loadTimeline(video); }
    // The timelines that the next start of the program reads from the documents.
    TimelineLines afterRestart() {
        project.storage.flushNow();
        MemoryUserDefaults emptied;
        InMemoryStorageManager next(emptied, project.scheduler, project.folder.directories(),
                                    project.log);
        return next.loadTimeline(video);
    }

    CoreProject project;
    TimelineDataManager& store = project.timeline;
    TimelineHistory history{store};
    std::string video;
    Uuid a;
    Uuid b;
    Uuid first;  // the first stamp of line A
};

TEST_F(TimelineEditsTest, EachEditIsSavedPublishedOnceRecordedAndUndoneExactly) {
    const Tag tag = project.tagLibrary.merged->tags.front();
    struct Case {
        std::string step;
        std::function<void()> edit;
        int recounts = 0;  // notifications that the counts of stamps have changed
        bool selectsAnotherLine = false;
        bool isSaved = true;
    };
    const std::vector<Case> cases{
        {"timelineStepAddTimeline", [&] { store.addLine("C"); }, 0, true},
        {"timelineStepRenameTimeline", [&] { store.renameLine(a, "Alpha"); }},
        {"timelineStepReorderTimelines", [&] { store.moveLine(b, a); }, 0, false, false},
        {"timelineStepMark", [&] { store.appendStamp(a, makeStamp(9)); }},
        {"timelineStepMark", [&] { store.appendStampForTag(tag, makeStamp(9, tag.id)); }},
        {"timelineStepEditLabels",
         [&] {
             store.setStampLabels(a, first, {"x", "y"});
         }},
        {"timelineStepEditTimeEvents", [&] { store.setStampTimeEvents(a, first, {"e"}); }},
        {"timelineStepResizeTag", [&] { store.updateStampTimes(a, first, 2.0, 8.0); }},
        {"timelineStepMoveTag",
         [&] {
             store.moveStamp({a, first}, b);
         }},
        {"timelineStepDeleteTag", [&] { store.removeStamp(a, first); }, 1},
        {"timelineStepDeleteTimeline", [&] { store.deleteLine(b); }, 1, true},
    };
    int publications = 0;
    int recounts = 0;
    bool savedFirst = true;
    bool recordedLast = true;
    bool selectionExists = true;
    const auto onSelection = store.selectedLineID.observe([&](const std::optional<Uuid>& line) {
        selectionExists = selectionExists && (!line || store.findLine(*line));
    });
    const auto onRecount = project.events.observe<events::StampCountsChanged>(
        [&](const events::StampCountsChanged&) { ++recounts; });

    for (const Case& c : cases) {
        SCOPED_TRACE(c.step);
        const State before = state();
        history.clear();
        publications = recounts = 0;
        {
            const auto onLines = store.lines.observe([&](const TimelineLines& lines) {
                ++publications;
                savedFirst = savedFirst && stored() == lines;
                recordedLast = recordedLast && !history.canUndo.get();
            });
            savedFirst = recordedLast = true;
            c.edit();
        }
        const State after = state();
        EXPECT_EQ(publications, 1);
        EXPECT_EQ(savedFirst, c.isSaved);
        EXPECT_TRUE(recordedLast);
        EXPECT_EQ(recounts, c.recounts);
        EXPECT_NE(after.first, before.first);
        EXPECT_EQ(after.second != before.second, c.selectsAnotherLine);
        EXPECT_EQ(stored() == after.first, c.isSaved);
        EXPECT_EQ(history.undoName.get(), c.step);
        EXPECT_EQ(afterRestart(), stored());

        history.undo();
        EXPECT_EQ(state(), before);
        EXPECT_EQ(stored(), before.first);
        EXPECT_FALSE(history.canUndo.get());
        EXPECT_EQ(history.redoName.get(), c.step);
        history.redo();
        EXPECT_EQ(state(), after);
        EXPECT_EQ(stored(), after.first);
        EXPECT_FALSE(history.canRedo.get());
        EXPECT_TRUE(selectionExists);
        history.undo();
    }
}

TEST_F(TimelineEditsTest, UndoAndRedoOfMarksAnnounceTheNewCounts) {
    int recounts = 0;
    const auto onRecount = project.events.observe<events::StampCountsChanged>(
        [&](const events::StampCountsChanged&) { ++recounts; });
    const auto expectRecounts = [&](int expected, const std::function<void()>& edit) {
        edit();
        recounts = 0;
        history.undo();
        EXPECT_EQ(recounts, expected) << *history.redoName.get();
        history.redo();
        EXPECT_EQ(recounts, 2 * expected) << *history.undoName.get();
    };
    expectRecounts(1, [&] { store.appendStamp(a, makeStamp(9)); });
    expectRecounts(1, [&] { store.removeStamp(a, first); });
    expectRecounts(1, [&] { store.deleteLine(b); });
    expectRecounts(0, [&] { store.renameLine(a, "Alpha"); });
    expectRecounts(0, [&] { store.setStampLabels(a, store.findLine(a)->stamps[0]->id, {"x"}); });
}

// A line or a stamp may be removed while a sheet or a drag uses it.
TEST_F(TimelineEditsTest, AnEditOfWhatDoesNotExistChangesAndSavesNothing) {
    const State before = state();
    store.moveLine(b, a);  // not saved yet, so that a save would be seen
    const State moved = state();
    history.clear();
    int publications = 0;
    const auto onLines = store.lines.observe([&](const TimelineLines&) { ++publications; });
    const Uuid nobody = Uuid::random();
    store.renameLine(nobody, "X");
    store.moveLine(nobody, a);
    store.moveLine(a, nobody);
    EXPECT_FALSE(store.appendStamp(nobody, makeStamp(1)));
    store.removeStamp(nobody, first);
    for (const auto& [line, stamp] : {std::pair(nobody, first), std::pair(a, nobody)}) {
        store.setStampLabels(line, stamp, {"x"});
        store.setStampTimeEvents(line, stamp, {"x"});
        store.updateStampTimes(line, stamp, 1.0, 2.0);
        store.moveStamp({line, stamp}, b);
    }
    store.moveStamp({a, first}, nobody);
    store.moveStamp({a, first}, a);
    EXPECT_EQ(state(), moved);
    EXPECT_EQ(publications, 0);
    EXPECT_FALSE(history.canUndo.get());
    EXPECT_EQ(stored(), before.first);
    store.saveLines();
    EXPECT_EQ(stored(), moved.first);
}

TEST_F(TimelineEditsTest, ATransactionSucceedsAsAWholeOrChangesNothing) {
    const State before = state();
    {
        auto abandoned = store.begin();
        abandoned.make(RemoveLine{a});
        abandoned.selectLine(std::nullopt);
    }
    auto failing = store.begin();
    failing.make(RemoveStamp{a, first});
    failing.make(RemoveStamp{a, first});
    failing.makeIfPossible(RenameLine{b, "Beta", {}});
    EXPECT_FALSE(store.commit(failing, "step"));
    auto duplicate = store.begin();
    duplicate.make(InsertLine{0, TimelineLine{a, "Again", {}, {}}});
    EXPECT_FALSE(store.commit(duplicate, "step"));
    EXPECT_EQ(state(), before);
    EXPECT_EQ(stored(), before.first);
    EXPECT_FALSE(history.canUndo.get());

    auto edit = store.begin();
    edit.makeIfPossible(RemoveStamp{a, Uuid::random()});
    edit.make(RenameLine{a, "A", {}});  // already has this name
    edit.make(RemoveStamp{a, first});
    edit.make(MoveLine{b, 0});
    edit.make(MoveLine{b, 99});
    edit.make(RemoveLine{a});
    EXPECT_EQ(state(), before);
    auto late = store.begin();
    late.make(RenameLine{b, "Late", {}});
    EXPECT_TRUE(store.commit(edit, "step"));
    EXPECT_THAT(*store.lines, SizeIs(2));
    EXPECT_EQ(stored(), *store.lines);
    EXPECT_FALSE(store.commit(edit, "step"));
    EXPECT_FALSE(store.commit(late, "step"));  // the lines have changed since it began
    EXPECT_EQ(store.findLine(b)->name, "B");
    history.undo();
    EXPECT_EQ(state(), before);
    EXPECT_FALSE(history.canUndo.get());
}

// Long lines are stored in pieces, and an edit reports which stamps it left alone. Each edit makes
// a few changes near and far from each other, at the ends, on one line or two, or undoes an earlier
// one.
TEST_F(TimelineEditsTest, AnyChangesOfLongLinesAreStoredAsMade) {
    std::mt19937 random(5);
    const auto upTo = [&](std::size_t n) { return std::size_t(random() % (n + 1)); };
    TimelineLines both(2);
    for (auto& line : both) {
        line.write().id = Uuid::random();
        for (int i = 0; i < 150; ++i)
            line.write().stamps.push_back(makeStamp(i));
    }
    store.replaceLines(both);
    const auto anyChange = [&](const TimelineLines& lines) -> TimelineChange {
        const TimelineLine& line = *lines[1 + upTo(1)];
        const std::size_t count = line.stamps.size();
        const std::size_t end = random() % 2 ? 0 : count - 1;
        const std::size_t index = random() % 4 ? upTo(count - 1) : end;
        const Uuid stamp = line.stamps[index]->id;
        switch (random() % 5) {
            case 0:
                return SetStampTimes{line.id, stamp, double(upTo(90)), 100};
            case 1:
                return SetStampLabels{line.id, stamp, {std::to_string(upTo(3))}};
            case 2:
                return SetStampTimeEvents{line.id, stamp, {std::to_string(upTo(3))}};
            case 3:
                return RemoveStamp{line.id, stamp};
            default:
                return InsertStamp{line.id, random() % 3 ? index : atEnd, makeStamp(double(index))};
        }
    };
    std::vector<TimelineChange> undoing;
    for (int i = 0; i < 400; ++i) {
        auto edit = store.begin();
        if (random() % 5 == 0)
            for (const auto& change : undoing)
                edit.makeIfPossible(change);
        else
            for (std::size_t more = upTo(4) + 1; more > 0; --more)
                edit.make(anyChange(edit.lines()));
        if (random() % 20 == 0)
            edit.make(RenameLine{edit.lines()[1]->id, std::to_string(i), {}});
        if (random() % 20 == 0)
            edit.renameTag("tag", std::to_string(i));
        ASSERT_TRUE(store.commit(edit));
        if (random() % 3)
            undoing = edit.inverses();
        ASSERT_EQ(stored(), *store.lines) << "edit " << i;
    }
}

TEST_F(TimelineEditsTest, ReplacedLinesAreSavedAndPublishedOnce) {
    store.renameLine(a, "Alpha");
    int publications = 0;
    int recounts = 0;
    const auto onLines = store.lines.observe([&](const TimelineLines&) { ++publications; });
    const auto onRecount = project.events.observe<events::StampCountsChanged>(
        [&](const events::StampCountsChanged&) { ++recounts; });
    const TimelineLine kept{b, "B", {makeStamp(1)}, {}};
    store.replaceLines({kept, TimelineLine{Uuid::random(), "C", {}, {}}});
    EXPECT_EQ(publications, 1);
    EXPECT_EQ(recounts, 1);
    ASSERT_THAT(*store.lines, SizeIs(3));
    EXPECT_EQ(store.lines->front()->id, drawingsLineId());
    EXPECT_EQ(store.selectedLineID.get(), b);
    EXPECT_EQ(afterRestart(), *store.lines);
    EXPECT_FALSE(history.canUndo.get());
    store.replaceLines({});
    EXPECT_FALSE(store.selectedLineID.get());
}

}  // namespace
}  // namespace tembrix
