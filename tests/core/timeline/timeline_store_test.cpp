#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <set>

#include "core/records/codec.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct RecordedLinks final : DrawingLinks {
    std::vector<std::string> deleted;
    std::vector<std::tuple<Uuid, double, double>> checked;
    void deleteDrawingFiles(const std::string& name) override { deleted.push_back(name); }
    void checkLinksAfterResize(const Uuid& stamp, double start, double finish) override {
        checked.emplace_back(stamp, start, finish);
    }
};

TimelineStamp makeStamp(double start, double finish, const std::string& tag = "tag") {
    TimelineStamp stamp;
    stamp.id = Uuid::random();
    stamp.idTag = tag;
    stamp.label = tag;
    stamp.colorHex = "FF0000";
    stamp.timeStartSeconds = start;
    stamp.timeFinishSeconds = finish;
    return stamp;
}

class TimelineStoreTest : public testing::Test {
  protected:
    TimelineStoreTest() {
        store.setDrawingLinks(&links);
        video = project.openVideo();
    }
    Uuid addLine(const std::string& name) {
        store.addLine(name);
        return store.lines->back()->id;
    }
    Uuid addStamp(const Uuid& line, double start, double finish) {
        const TimelineStamp stamp = makeStamp(start, finish);
        EXPECT_TRUE(store.appendStamp(line, stamp));
        return stamp.id;
    }
    const TimelineStamp& stamp(const Uuid& id) { return *store.findStamp(id)->stamp; }
    std::vector<std::string> names() {
        std::vector<std::string> all;
        for (const auto& line : *store.lines)
            all.push_back(line->name);
        return all;
    }
    TimelineLines stored() { return project.storage.loadTimeline(video); }

    CoreProject project;
    RecordedLinks links;
    TimelineDataManager& store = project.timeline;
    std::string video;
};

TEST_F(TimelineStoreTest, OpeningPutsTheDrawingsFirstAndSelectsByMode) {
    EXPECT_THAT(names(), ElementsAre("DrawingsTimelineName"));
    EXPECT_FALSE(store.selectedLineID.get());  // the loaded timeline was empty
    EXPECT_EQ(stored(), *store.lines);

    TimelineLine first{Uuid::random(), "A", {makeStamp(1, 2)}, {}};
    TimelineLine third{drawingsLineId(), "Drawings", {}, {}};
    TimelineLine repeated = first;  // a document may contain an id twice
    const Bytes bookmark = **store.currentBookmark;
    store.openTimeline(bookmark, {first, repeated, third});
    EXPECT_THAT(names(), ElementsAre("Drawings", "A", "A"));
    EXPECT_EQ(store.selectedLineID.get(), first.id);
    EXPECT_NE(store.lines.get()[1]->id, store.lines.get()[2]->id);
    EXPECT_NE(store.lines.get()[1]->stamps[0]->id, store.lines.get()[2]->stamps[0]->id);
    EXPECT_EQ(stored(), *store.lines);

    project.markupModes.setMarkupMode(MarkupMode::tagBased);
    store.openTimeline(bookmark, stored());
    EXPECT_FALSE(store.selectedLineID.get());
    store.addLine("B");
    store.selectLine(first.id);
    EXPECT_THAT(*store.lines, SizeIs(3));
    EXPECT_FALSE(store.selectedLineID.get());
}

TEST_F(TimelineStoreTest, LinesAreMadeRenamedMovedAndDeleted) {
    const Uuid a = addLine("A");
    const Uuid b = addLine("B");
    const Uuid c = addLine("C");
    EXPECT_EQ(store.selectedLineID.get(), c);
    store.renameLine(b, "Beta");
    store.renameLine(Uuid::random(), "nobody");
    EXPECT_EQ(stored(), *store.lines);

    const TimelineLines before = stored();
    store.moveLine(a, c);
    EXPECT_THAT(names(), ElementsAre("DrawingsTimelineName", "Beta", "A", "C"));
    EXPECT_EQ(stored(), before);  // the order is saved with the next edit
    store.moveLine(c, b);
    EXPECT_THAT(names(), ElementsAre("DrawingsTimelineName", "C", "Beta", "A"));
    store.moveLine(c, c);

    // The drawings line cannot be moved, renamed or deleted.
    store.moveLine(drawingsLineId(), a);
    store.moveLine(a, drawingsLineId());
    store.renameLine(drawingsLineId(), "Mine");
    store.deleteLine(drawingsLineId());
    EXPECT_THAT(names(), ElementsAre("DrawingsTimelineName", "C", "Beta", "A"));

    addStamp(c, 1, 2);
    int recounts = 0;
    const auto counting = project.events.observe<events::StampCountsChanged>(
        [&](const events::StampCountsChanged&) { ++recounts; });
    store.deleteLine(c);
    EXPECT_FALSE(store.selectedLineID.get());
    EXPECT_EQ(recounts, 1);
    EXPECT_EQ(stored(), *store.lines);
}

TEST_F(TimelineStoreTest, ResizeLeavesHalfASecondAndChecksTheLinks) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 10, 10.2);
    store.updateStampTimes(line, id, 10.1, std::nullopt);
    EXPECT_DOUBLE_EQ(stamp(id).timeStartSeconds, 9.7);
    store.updateStampTimes(line, id, std::nullopt, 3.0);
    EXPECT_DOUBLE_EQ(stamp(id).timeFinishSeconds, stamp(id).timeStartSeconds + 0.5);
    store.updateStampTimes(line, id, 50.0, 40.0);
    EXPECT_DOUBLE_EQ(stamp(id).timeFinishSeconds, 40);
    EXPECT_EQ(stored(), *store.lines);
    ASSERT_THAT(links.checked, SizeIs(3));
    EXPECT_EQ(links.checked.back(),
              std::tuple(id, stamp(id).timeStartSeconds, stamp(id).timeFinishSeconds));
    store.updateStampTimes(line, Uuid::random(), 1.0, 2.0);
    EXPECT_THAT(links.checked, SizeIs(3));
}

TEST_F(TimelineStoreTest, MovedStampIsACopyOffTheMap) {
    const Uuid a = addLine("A");
    const Uuid b = addLine("B");
    TimelineStamp original = makeStamp(1, 2);
    original.isActiveForMapView = true;
    original.position = Point{3, 4};
    original.labels = {"label"};
    store.appendStamp(a, original);
    store.moveStamp({a, original.id}, a);
    EXPECT_TRUE(store.findStamp(original.id));
    store.moveStamp({a, original.id}, Uuid::random());
    EXPECT_TRUE(store.findStamp(original.id));

    store.moveStamp({a, original.id}, b);
    EXPECT_FALSE(store.findStamp(original.id));
    ASSERT_THAT(store.findLine(b)->stamps, SizeIs(1));
    TimelineStamp moved = *store.findLine(b)->stamps[0];
    EXPECT_NE(moved.id, original.id);
    EXPECT_FALSE(moved.isActiveForMapView);
    moved.id = original.id;
    moved.isActiveForMapView = original.isActiveForMapView;
    EXPECT_EQ(moved, original);
    EXPECT_EQ(stored(), *store.lines);
}

TEST_F(TimelineStoreTest, RemovingADrawingRemovesItsFilesAndNoOtherStampDoes) {
    const Uuid line = addLine("A");
    const Uuid id = addStamp(line, 1, 2);
    TimelineStamp drawing = makeStamp(1, 7, "screenshot_Frame_1");
    drawing.label = "Frame";
    store.appendStamp(drawingsLineId(), drawing);
    store.selectStamp(drawing.id);
    store.removeStamp(line, id);
    store.removeStamp(drawingsLineId(), Uuid::random());
    EXPECT_THAT(links.deleted, IsEmpty());
    store.removeStamp(drawingsLineId(), drawing.id);
    EXPECT_THAT(links.deleted, ElementsAre("Frame"));
    EXPECT_EQ(store.selectedStampID.get(), drawing.id);
    EXPECT_EQ(stored(), *store.lines);
}

TEST_F(TimelineStoreTest, ARenamedTagReachesItsStampsAndItsLine) {
    const Tag tag = project.tagLibrary.merged->tags.front();
    const TimelineStamp marked = makeStamp(1, 2, tag.id);
    store.appendStampForTag(tag, marked);
    store.appendStampForTag(tag, makeStamp(2, 3, tag.id));
    ASSERT_THAT(*store.lines, SizeIs(2));
    const Uuid own = store.lines->back()->id;
    EXPECT_EQ(store.findLine(own)->name, tag.name);
    EXPECT_THAT(store.findLine(own)->stamps, SizeIs(2));
    const Uuid other = addLine("By hand");
    TimelineStamp elsewhere = makeStamp(3, 4, tag.id);
    elsewhere.colorHex = "123456";
    store.appendStamp(other, elsewhere);
    const Uuid unrelated = addStamp(other, 5, 6);

    project.events.post(events::TagUpdated{tag.id, "New name"});
    EXPECT_EQ(store.findLine(own)->name, "New name");
    EXPECT_EQ(store.findLine(other)->name, "By hand");
    EXPECT_EQ(stamp(marked.id).label, "New name");
    EXPECT_EQ(stamp(elsewhere.id).label, "New name");
    EXPECT_EQ(stamp(elsewhere.id).colorHex, "123456");
    EXPECT_EQ(stamp(unrelated).label, "tag");
    EXPECT_EQ(stored(), *store.lines);

    project.events.post(events::TagUpdated{tag.id, {}});
    EXPECT_EQ(stamp(marked.id).label, tag.name);
    project.events.post(events::TagUpdated{"tag", "not in the library"});
    EXPECT_EQ(stamp(unrelated).label, "tag");
}

TEST_F(TimelineStoreTest, SavesGoToTheVideoOfTheBookmarkOrNowhere) {
    TimelineDataManager fresh(project.storage, project.library, project.tagLibrary,
                              project.markupModes, project.events, project.texts);
    fresh.addLine("nowhere");
    EXPECT_THAT(stored(), SizeIs(1));

    // Opening a second project must not change the data of the first.
    addLine("first");
    const std::string second = project.openVideo("second.mp4");
    addLine("second");
    EXPECT_EQ(stored().back()->name, "first");
    EXPECT_EQ(project.storage.loadTimeline(second).back()->name, "second");
    // Two entries with the same bookmark have separate timelines.
    const Bytes bookmark = **store.currentBookmark;
    std::filesystem::remove(project.folder.path() / "second.mp4");
    project.library.appendFile({{bookmark, "TWIN", {}, {}}, nullptr});
    store.openTimeline(bookmark, {}, "TWIN");
    addLine("of the twin");
    EXPECT_EQ(project.storage.loadTimeline("TWIN").back()->name, "of the twin");
    EXPECT_EQ(project.storage.loadTimeline(second).back()->name, "second");
    store.setBookmark(toBytes("of no video"));
    addLine("nowhere");
    EXPECT_THAT(project.storage.loadTimeline(second), SizeIs(2));
}

// Any sequence of calls with existing and unknown ids must keep the invariants.
TEST_F(TimelineStoreTest, InvariantsHoldUnderRandomEdits) {
    std::mt19937 random(11);
    const auto upTo = [&](std::size_t n) { return std::size_t(random() % (n + 1)); };
    const auto anyLine = [&] {
        const auto& lines = *store.lines;
        return random() % 12 ? lines[upTo(lines.size() - 1)]->id : Uuid::random();
    };
    const auto anyStamp = [&](const Uuid& id) {
        const TimelineLine* line = store.findLine(id);
        return line && !line->stamps.empty() ? line->stamps[upTo(line->stamps.size() - 1)]->id
                                             : Uuid::random();
    };
    for (int step = 0; step < 4000; ++step) {
        const Uuid line = anyLine();
        const Uuid target = anyStamp(line);
        const double time = double(random() % 1000) / 10;
        switch (random() % 12) {
            case 0:
                store.addLine("Line " + std::to_string(step));
                break;
            case 1:
                store.deleteLine(random() % 3 ? Uuid::random() : line);
                break;
            case 2:
                store.moveLine(line, anyLine());
                break;
            case 3:
                store.removeStamp(line, target);
                break;
            case 4:
                store.moveStamp({line, target}, anyLine());
                break;
            case 5:
                store.setStampLabels(line, target, {std::to_string(step)});
                break;
            case 6:
            case 7: {
                const bool known = store.findStamp(target).has_value();
                store.updateStampTimes(line, target,
                                       random() % 2 ? std::optional(time) : std::nullopt,
                                       std::optional(double(random() % 1000) / 10));
                if (known) {
                    ASSERT_GE(stamp(target).length(), TimelineDataManager::minStampLength - 1e-9);
                }
                break;
            }
            default:
                store.appendStamp(line, makeStamp(time, time + double(random() % 20)));
        }
        ASSERT_EQ(store.lines->front()->id, drawingsLineId());
        std::set<Uuid> ids;
        for (const auto& row : *store.lines) {
            ASSERT_TRUE(ids.insert(row->id).second);
            for (const auto& each : row->stamps) {
                ASSERT_TRUE(ids.insert(each->id).second);
                if (step % 50 == 0) {
                    ASSERT_EQ(store.findStamp(each->id)->stamp, &*each);
                }
            }
        }
    }
    store.saveLines();
    EXPECT_EQ(stored(), *store.lines);
}

}  // namespace
}  // namespace tembrix
