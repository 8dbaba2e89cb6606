// Data replaced by a restore is kept and can be restored.

#include <gtest/gtest.h>

#include "base/bytes.h"
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
    void restoreAfterMarking(double start) {
        markAndFlush(start);
        EXPECT_TRUE(program->sync.restoreFromBackup());
        program->scheduler.advance(60);
    }
    fs::path folderOf(const std::string& state) {
        return machine.documents() / layout::replacedFolder / state;
    }
    // A state from before the newest marks brings a deleted match back.
    void bringBackDeleted(bool afterRestart) {
        program->library.renameVideo(program->library.files().front(), "Later");
        restoreAfterMarking(500);
        const std::string before = newest();
        markAndFlush(700);
        const TimelineLines late = timeline();
        ASSERT_TRUE(program->library.deleteVideo(program->library.files().front()));
        program->scheduler.run();
        if (afterRestart)
            restart();
        EXPECT_TRUE(program->sync.bringBack(before));
        program->scheduler.run();
        ASSERT_EQ(program->library.videosData().size(), 1U);
        EXPECT_NE(timeline(), late);
        EXPECT_TRUE(program->sync.backUpNow());
        EXPECT_TRUE(program->sync.bringBack(newest()));
        program->scheduler.run();
        EXPECT_EQ(timeline(), late);
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
    EXPECT_TRUE(program->sync.bringBack(newest()));
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_EQ(program->index.collections(), (std::vector<CollectionInfo>{hockey, chess}));
    EXPECT_TRUE(program->tagLibrary.collectionData("Chess"));
    program->scheduler.advance(31);
    restart();
    EXPECT_EQ(timeline(), day);

    EXPECT_TRUE(program->sync.bringBack(newest()));
    program->scheduler.run();
    EXPECT_EQ(timeline(), marked);
    EXPECT_EQ(program->index.collections(), std::vector{hockey});
}

TEST_F(Replaced, ARestoreByHandKeepsTheListAndLeavesTheWorkingCopiesInForce) {
    markAndFlush(500);
    const TimelineLines day = timeline();
    program->library.renameVideo(program->library.files().front(), "Later");
    EXPECT_TRUE(program->sync.restoreFromBackup());
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_EQ(program->library.videosData().front().customName, "Final");
    EXPECT_TRUE(program->sync.bringBack(newest()));
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_EQ(program->library.videosData().front().customName, "Later");
}

TEST_F(Replaced, MarksMadeSinceAreKeptWhenAnEarlierStateIsBroughtBack) {
    markAndFlush(500);
    const TimelineLines day = timeline();
    EXPECT_TRUE(program->sync.restoreFromBackup());
    const std::string before = newest();
    program->scheduler.advance(5);
    openVideo();
    mark(700);
    const TimelineLines late = timeline();
    EXPECT_TRUE(program->sync.bringBack(before));
    program->scheduler.run();
    EXPECT_EQ(timeline(), day);
    EXPECT_TRUE(program->sync.bringBack(newest()));
    program->scheduler.run();
    EXPECT_EQ(timeline(), late);
}

TEST_F(Replaced, MarksOfADeletedMatchAreKeptWhenAnEarlierStateBringsItBack) {
    bringBackDeleted(false);
}

TEST_F(Replaced, MarksOfAMatchDeletedInAnEarlierRunAreKeptAsWell) {
    bringBackDeleted(true);
}

TEST_F(Replaced, AStateWithTheListAloneLeavesADeletedMatchItsMarks) {
    program->library.renameVideo(program->library.files().front(), "Later");
    EXPECT_TRUE(program->sync.restoreFromBackup());
    program->scheduler.run();
    const std::string before = newest();
    ASSERT_FALSE(fs::exists(folderOf(before) / layout::timelinesFolder));
    markAndFlush(700);
    const TimelineLines late = timeline();
    ASSERT_TRUE(program->library.deleteVideo(program->library.files().front()));
    restart();
    EXPECT_TRUE(program->sync.bringBack(before));
    program->scheduler.run();
    ASSERT_EQ(program->library.videosData().size(), 1U);
    EXPECT_EQ(timeline(), late);
}

TEST_F(Replaced, TheLastFiveStatesAreKeptAndAKilledRestoreLosesNone) {
    EXPECT_TRUE(program->sync.restoreFromBackup());
    EXPECT_TRUE(program->sync.replacedStates().empty()) << "nothing was different";
    for (int i = 0; i < 7; ++i)
        restoreAfterMarking(i * 100.0);
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
    EXPECT_TRUE(program->sync.deleteAllData());
    EXPECT_TRUE(program->sync.replacedStates().empty());
}

TEST_F(Replaced, AStateThatCannotBeBroughtBackIsKeptAndTheFailureReported) {
    for (int i = 0; i < 5; ++i)
        restoreAfterMarking(i * 100.0);
    const std::string oldest = program->sync.replacedStates().back().name;
    spoil(folderOf(oldest) / layout::collectionIndexFile);
    markAndFlush(900);
    EXPECT_FALSE(program->sync.bringBack(oldest));
    EXPECT_EQ(program->sync.replacedStates().back().name, oldest);
    EXPECT_FALSE(program->sync.bringBack("no such state"));
    fs::remove(folderOf(oldest) / layout::collectionIndexFile);
    EXPECT_TRUE(program->sync.bringBack(oldest));
    EXPECT_TRUE(fs::exists(folderOf(oldest)));
}

TEST_F(Replaced, AListOfVideosThatCannotBeKeptIsNotReplaced) {
    program->library.renameVideo(program->library.files().front(), "Later");
    program->scheduler.run();
    fs::remove_all(machine.documents() / layout::replacedFolder);
    spoil(machine.documents() / layout::replacedFolder, "a file where the folder should be");
    EXPECT_FALSE(program->sync.restoreFromBackup());
    machine.defaults->remove(layout::lastSyncDateKey);
    program.reset();
    fs::remove(machine.secondCopy());
    restart();
    EXPECT_TRUE(logged("Differences found"));
    EXPECT_EQ(program->library.videosData().front().customName, "Later");
    EXPECT_TRUE(notified(SafetyNotice::restoreIncomplete));
    EXPECT_FALSE(notified(SafetyNotice::restored));
}

TEST_F(Replaced, TheOldestStateIsRemovedEvenIfTheClockWasAheadWhenOthersWereMade) {
    program->scheduler.setWallClock(Date{4e9});
    for (int i = 0; i < 5; ++i)
        restoreAfterMarking(i * 100.0);
    const std::string oldest = program->sync.replacedStates().back().name;
    program->scheduler.setWallClock(Date{1.8e9});
    restoreAfterMarking(900);
    const auto states = program->sync.replacedStates();
    ASSERT_EQ(states.size(), ReplacedData::keptCount);
    EXPECT_LT(states.front().moment.secondsSince1970, 1.9e9);
    EXPECT_FALSE(fs::exists(folderOf(oldest)));
}

TEST_F(Replaced, ShortLaunchesAfterLostDefaultsRestoreOnceAndKeepWhatWasReplaced) {
    markAndFlush(500);
    const TimelineLines day = timeline();
    program.reset();
    machine.loseDefaults();
    for (int i = 0; i < 7; ++i)
        restart();
    EXPECT_FALSE(notified(SafetyNotice::restored));
    EXPECT_TRUE(logged("✅ DataSync: Data is identical"));
    ASSERT_EQ(program->sync.replacedStates().size(), 1U);
    EXPECT_TRUE(program->sync.bringBack(newest()));
    EXPECT_EQ(timeline(), day);
}

TEST_F(Replaced, DeletedDataIsNotWrittenAgainAtTheNextLaunch) {
    EXPECT_TRUE(program->sync.deleteAllData());
    program->sync.deleteBackupTimelines();
    program->scheduler.run();
    for (int launch = 0; launch < 2; ++launch) {
        restartAndBackUp();
        program->storage.scheduleSaveToDisk();
        program->scheduler.advance(31);
        EXPECT_FALSE(fs::exists(program->storage.collectionsFolder() / hockey.id));
        EXPECT_FALSE(fs::exists(program->storage.timelineFile(video)));
    }
}

// The process is killed when the values are removed, before the second copy is written.
TEST_F(Replaced, DeletedDataDoesNotComeBackFromAnOlderSecondCopy) {
    const fs::path earlier = machine.folder.path() / "earlier second copy";
    fs::copy_file(machine.secondCopy(), earlier);
    EXPECT_TRUE(program->sync.deleteAllData());
    program.reset();
    fs::copy_file(earlier, machine.secondCopy(), fs::copy_options::overwrite_existing);
    restart();
    EXPECT_TRUE(program->library.videosData().empty());
    EXPECT_EQ(program->sync.notices(), std::vector<SafetyNotice>());
}

// The process is killed when it is about to log its n-th line.
TEST_F(Replaced, AnInterruptedBringBackIsFinishedAtTheNextStart) {
    markAndFlush(500);
    program->library.renameVideo(program->library.files().front(), "Later");
    const TimelineLines day = timeline();
    EXPECT_TRUE(program->sync.restoreFromBackup());
    const std::string late = newest();
    for (int line = 1; line <= 6; ++line) {
        SCOPED_TRACE(line);
        openVideo();
        mark(1000 + line);
        const TimelineLines marks = timeline();
        program->library.renameVideo(program->library.files().front(), "Latest");
        program->scheduler.advance(60);
        program->log.linesLeft = line;
        EXPECT_THROW((void)program->sync.bringBack(late), CuttingLog::Cut);
        restart();
        EXPECT_TRUE(notified(SafetyNotice::restoreFinished));
        EXPECT_EQ(timeline(), day);
        EXPECT_EQ(program->library.videosData().front().customName, "Later");
        EXPECT_EQ(program->index.collections(), std::vector{hockey});
        const auto kept = readFile(folderOf(newest()) / layout::timelinesFolder /
                                   (video + layout::recordExtension));
        ASSERT_TRUE(kept.ok());
        EXPECT_EQ(decode<TimelineLines>(*kept).value(), marks);
        EXPECT_TRUE(fs::exists(folderOf(newest()) / layout::defaultsBackupFile));
        restart();
        EXPECT_FALSE(notified(SafetyNotice::restoreFinished));
    }
}

TEST_F(Replaced, AnUnreadableWorkingCopyIsKeptWhenAStateReplacesIt) {
    markAndFlush(500);
    EXPECT_TRUE(program->sync.restoreFromBackup());
    const std::string key = layout::timelineKey(video);
    machine.defaults->setData(key, toBytes("[{"));
    EXPECT_TRUE(program->sync.bringBack(newest()));
    EXPECT_EQ(machine.defaults->data(layout::damagedKey(key)), toBytes("[{"));
}

}  // namespace
}  // namespace tembrix
