// Data replaced by a restore is kept and can be restored.

#include <gtest/gtest.h>

#include "base/files.h"

#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "season.h"

namespace tembrix {
namespace {

struct Replaced : Season {
    TimelineLines timeline() { return program->storage.loadTimeline(video); }
    void markAndFlush(double start) {
        openVideo();
        mark(start);
        program->scheduler.advance(31);
    }
    std::string newest() { return program->sync.replacedStates().front().name; }
};

TEST_F(Replaced, TheDayThatLostDefaultsCostComesBackAndCanBeGivenBackAgain) {
    markAndFlush(500);
    program->library.renameVideo(program->library.files().front(), "Final, late");
    CustomCollectionManager collection(program->collections);
    collection.setCollectionName("Chess");
    const CollectionInfo chess = program->save(collection, "Check");
    program->scheduler.advance(31);
    const TimelineLines day = timeline();
    ASSERT_NE(day, marked);

    machine.loseDefaults();
    restart();
    EXPECT_TRUE(notified(SafetyNotice::restored));
    expectAllThere();  // the backup has priority over the documents
    EXPECT_EQ(machine.defaults->data(layout::timelineKey(video)), encode(marked).value());

    ASSERT_EQ(program->sync.replacedStates().size(), 1U);
    program->sync.bringBack(newest());
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_EQ(program->index.collections(), (std::vector<CollectionInfo>{hockey, chess}));
    EXPECT_TRUE(program->tagLibrary.collectionData("Chess"));
    program->scheduler.advance(31);
    restart();
    EXPECT_EQ(timeline(), day);

    program->sync.bringBack(newest());
    program->scheduler.run();
    EXPECT_EQ(timeline(), marked);
    EXPECT_EQ(program->index.collections(), std::vector{hockey});
}

TEST_F(Replaced, ARestoreByHandKeepsTheListAndLeavesTheWorkingCopiesInForce) {
    markAndFlush(500);
    const TimelineLines day = timeline();
    program->library.renameVideo(program->library.files().front(), "Later");
    program->sync.restoreFromBackup();
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_EQ(program->library.videosData().front().customName, "Final");
    program->sync.bringBack(newest());
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_EQ(program->library.videosData().front().customName, "Later");
}

TEST_F(Replaced, MarksMadeSinceAreKeptWhenAnEarlierStateIsBroughtBack) {
    program->sync.restoreFromBackup();
    const std::string before = newest();
    program->scheduler.advance(5);
    openVideo();
    mark(700);
    const TimelineLines late = timeline();
    program->sync.bringBack(before);
    program->scheduler.run();
    EXPECT_EQ(timeline(), marked);
    program->sync.bringBack(newest());
    program->scheduler.run();
    EXPECT_EQ(timeline(), late);
}

TEST_F(Replaced, TheLastFiveStatesAreKeptAndAKilledRestoreLosesNone) {
    for (int i = 0; i < 7; ++i) {
        program->sync.restoreFromBackup();
        program->scheduler.advance(60);
    }
    auto states = program->sync.replacedStates();
    ASSERT_EQ(states.size(), ReplacedData::keptCount);
    EXPECT_GT(states.front().moment, states.back().moment);
    EXPECT_EQ(states.front().moment.secondsSince1970,
              std::floor(program->scheduler.now().secondsSince1970 - 60));

    // Killed after the new timelines were put in place and before the old ones were moved.
    const fs::path timelines = program->storage.timelinesFolder();
    fs::path old = timelines;
    old += ".replaced";
    fs::copy(timelines, old, fs::copy_options::recursive);
    restart();
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(machine.documents() / layout::replacedFolder / newest() /
                           layout::timelinesFolder / (video + layout::recordExtension)));
    program->sync.deleteAllData();
    EXPECT_TRUE(program->sync.replacedStates().empty());
}

}  // namespace
}  // namespace tembrix
