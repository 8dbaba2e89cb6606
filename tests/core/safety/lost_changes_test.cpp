// Damage to the end of the database log: the defaults return to an earlier moment.

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/files.h"

#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "season.h"

namespace tembrix {
namespace {

struct LostChanges : Season {
    CollectionInfo addCollection(const std::string& name) {
        CustomCollectionManager collection(program->collections);
        collection.setCollectionName(name);
        return program->save(collection, "Tag of " + name);
    }
    void killAndGoBackTo(const MemoryUserDefaults::Moment& moment) {
        program.reset();
        machine.defaults->goBackTo(moment);
        restart();
    }
    // Goes back to a moment at which the index file had yet to be written, before a collection was
    // added. Returns that collection.
    CollectionInfo addAndGoBack(const std::function<void()>& whileEnded) {
        addCollection("Chess");
        const auto unsaved = machine.defaults->moment();
        EXPECT_TRUE(machine.defaults->data(layout::collectionsUnsavedKey));
        program->scheduler.advance(3);
        const CollectionInfo golf = addCollection("Golf");
        program->scheduler.advance(31);
        program.reset();
        whileEnded();
        killAndGoBackTo(unsaved);
        program->storage.scheduleSaveToDisk();
        program->scheduler.advance(31);
        return golf;
    }
};

TEST_F(LostChanges, TheNewerCopyIsUsedAtTheStartAndFromThenOn) {
    const auto before = machine.defaults->moment();
    openVideo();
    mark(500);
    const TimelineLines newest = *program->timeline.lines;
    CollectionData data = *program->storage.loadCollection(hockey.id);
    data.tags.front().name = "Shot";
    program->storage.saveCollection(data);
    const CollectionInfo chess = addCollection("Chess");
    program->library.renameVideo(program->library.files().front(), "Later");
    program->scheduler.advance(31);
    EXPECT_TRUE(program->sync.backUpNow());

    killAndGoBackTo(before);
    EXPECT_TRUE(notified(SafetyNotice::newerCopiesUsed));
    EXPECT_TRUE(logged("✅ DataSync: Data is identical")) << "the date of the backup is known";
    for (int start = 0; start < 2; ++start) {
        EXPECT_EQ(program->storage.loadTimeline(video), newest);
        EXPECT_EQ(program->storage.loadCollection(hockey.id), data);
        EXPECT_EQ(program->index.collections(), (std::vector<CollectionInfo>{hockey, chess}));
        EXPECT_TRUE(program->storage.loadCollection(chess.id));
        EXPECT_EQ(program->library.videosData().front().customName, "Later");
        program->storage.scheduleSaveToDisk();
        program->scheduler.advance(31);
        EXPECT_TRUE(program->sync.backUpNow());
        EXPECT_TRUE(fs::exists(program->sync.savedCollectionFolder(chess.id) / layout::tagsFile));
        restart();
        EXPECT_FALSE(notified(SafetyNotice::newerCopiesUsed));
    }
}

TEST_F(LostChanges, ADeletionThatWasTakenBackDoesNotReplaceLaterMarks) {
    ASSERT_TRUE(program->library.deleteVideo(program->library.files().front()));
    const auto deleted = machine.defaults->moment();
    ASSERT_TRUE(program->library.takeBackDeletion());
    openVideo();
    mark(500);
    const TimelineLines newest = *program->timeline.lines;
    program->scheduler.advance(31);
    killAndGoBackTo(deleted);
    for (int start = 0; start < 2; ++start) {
        ASSERT_EQ(program->library.videosData().size(), 1U);
        EXPECT_EQ(program->storage.loadTimeline(video), newest);
        EXPECT_EQ(machine.defaults->data(layout::damagedKey(layout::timelineKey(video))),
                  encode(marked).value());
        EXPECT_TRUE(machine.defaults->keys(layout::deletedPrefix).empty());
        program->scheduler.advance(31);
        EXPECT_TRUE(program->sync.backUpNow());
        restart();
    }
}

TEST_F(LostChanges, AnIndexThatDiffersInOneByteIsTheNewerOne) {
    const auto before = machine.defaults->moment();
    program->index.addOrUpdateCollection(hockey.id, "Hockez");
    program->scheduler.advance(3);
    killAndGoBackTo(before);
    EXPECT_EQ(program->index.collections().front().name, "Hockez");
}

TEST_F(LostChanges, AnOlderUnsavedIndexGivesWayToTheFile) {
    const CollectionInfo golf = addAndGoBack([] {});
    EXPECT_EQ(program->index.collections().size(), 3U);
    EXPECT_TRUE(fs::exists(program->storage.collectionsFolder() / golf.id / layout::tagsFile));
}

TEST_F(LostChanges, NoFolderOfACollectionIsRemovedEvenIfTheSecondCopyIsLost) {
    const CollectionInfo golf = addAndGoBack([this] { fs::remove(machine.secondCopy()); });
    for (int start = 0; start < 2; ++start) {
        EXPECT_EQ(program->index.collections().back(), golf)
            << "an unlisted folder is listed again";
        EXPECT_TRUE(fs::exists(program->storage.collectionsFolder() / golf.id / layout::tagsFile));
        restart();
        EXPECT_FALSE(notified(SafetyNotice::newerCopiesUsed));
        program->storage.scheduleSaveToDisk();
        program->scheduler.advance(31);
    }
}

// A salvaged database no longer knows that these were deleted.
TEST_F(LostChanges, WhatWasDeletedIsNotALostChange) {
    const CollectionInfo chess = addCollection("Chess");
    program->scheduler.advance(31);
    program->storage.deleteCollection(chess.id);
    program->index.removeCollection(chess.id);
    ASSERT_TRUE(program->library.deleteVideo(program->library.files().front()));
    program->scheduler.advance(31);
    EXPECT_FALSE(fs::exists(program->storage.collectionsFolder() / chess.id));
    program.reset();
    machine.defaults->lose(layout::collectionKey(chess.id));
    machine.defaults->lose(layout::timelineKey(video));
    restart();
    EXPECT_EQ(program->sync.notices(), std::vector<SafetyNotice>());
    EXPECT_FALSE(program->storage.hasLostChanges());
    EXPECT_EQ(program->index.collections(), std::vector{hockey});
}

TEST_F(LostChanges, ANewerChangeIsNotReplacedByTheSecondCopy) {
    program->library.renameVideo(program->library.files().front(), "Newer");
    program->index.addOrUpdateCollection(hockey.id, "Ice hockey");
    restart();  // killed before the copies were written
    EXPECT_EQ(program->library.videosData().front().customName, "Newer");
    EXPECT_EQ(program->index.collections().front().name, "Ice hockey");
    EXPECT_EQ(program->sync.notices(), std::vector<SafetyNotice>());
}

}  // namespace
}  // namespace tembrix
