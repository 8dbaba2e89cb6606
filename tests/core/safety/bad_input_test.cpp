// Damaged, missing and foreign data in both stores and in the backup must not affect other data.

#include <gtest/gtest.h>

#include "base/files.h"
#include "base/result.h"
#include "base/uuid.h"

#include "core/collections/standard_collections.h"
#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "season.h"

namespace tembrix {
namespace {

struct BadInput : Season {};

TEST_F(BadInput, AnIndexThatListsMissingFoldersHidesNothingElse) {
    program->index.addOrUpdateCollection("GONE", "Gone");
    program->index.addOrUpdateCollection("../out", "Outside");
    program->scheduler.advance(3);
    fs::create_directories(machine.backup() / "Tembrix-Stat/Collections/GONE");
    restartAndBackUp();
    EXPECT_FALSE(program->storage.loadCollection("GONE"));
    EXPECT_FALSE(program->storage.loadCollection("../out"));
    EXPECT_FALSE(program->tagLibrary.collectionData("Gone"));
    EXPECT_TRUE(program->tagLibrary.collectionData("Hockey"));
    EXPECT_EQ(program->index.loadBookmarks().size(), 1U);
    EXPECT_TRUE(fs::exists(machine.backup() / "Tembrix-Stat/Collections/GONE"));
    EXPECT_TRUE(logged("Collection folder missing in Documents: Gone"));
}

TEST_F(BadInput, ALostOrBrokenIndexIsRebuiltAndNeverSpoilsTheBackup) {
    for (const bool lost : {true, false}) {
        SCOPED_TRACE(lost);
        if (lost)
            fs::remove_all(machine.documents());
        else
            spoil(index());
        restartAndBackUp();
        expectAllThere();
        EXPECT_EQ(*decode<std::vector<CollectionInfo>>(*readFile(index())), std::vector{hockey});
    }
    // Damage while the program runs affects neither the folders nor the backup.
    spoil(index());
    ASSERT_TRUE(program->index.replaceIndexFile([] { return Result<void>(); }));
    machine.defaults->remove(layout::collectionKey(hockey.id));
    (void)program->sync.backUpNow();
    EXPECT_TRUE(fs::exists(program->storage.collectionsFolder() / hockey.id / layout::tagsFile));
    restart();
    expectAllThere();
}

TEST_F(BadInput, ABackupFolderThatCannotBeUsedStopsNothing) {
    fs::remove_all(machine.backup());
    spoil(machine.backup(), "a file where the folder should be");
    const auto noted = machine.defaults->date(layout::lastSyncDateKey);
    restartAndBackUp();
    EXPECT_TRUE(notified(SafetyNotice::backupFailed));
    EXPECT_FALSE(logged("Backup created successfully"));
    EXPECT_EQ(machine.defaults->date(layout::lastSyncDateKey), noted);
    EXPECT_FALSE(program->sync.backUpNow());
    EXPECT_FALSE(program->sync.restoreFromBackup());
    program->sync.deleteBackupTimelines();
    program->scheduler.run();
    expectAllThere();
    EXPECT_TRUE(logged("❌ DataSync: Error saving UserDefaults - "));
    EXPECT_TRUE(logged("❌ DataSync: Error backing up collection Hockey - "));
    EXPECT_TRUE(logged("⚠️ DataSync: UserDefaults backup not found"));
    // It is used again as soon as it is readable.
    fs::remove(machine.backup());
    EXPECT_TRUE(program->sync.backUpNow());
    program->scheduler.run();
    EXPECT_FALSE(notified(SafetyNotice::backupFailed));
    machine.loseDefaults();
    fs::remove_all(machine.documents());
    restart();
    expectAllThere();
}

TEST_F(BadInput, DocumentsThatCannotBeWrittenAreReportedUntilTheyCan) {
    const StorageHealth& health = program->core.health;
    fs::remove_all(program->storage.timelinesFolder());
    spoil(program->storage.timelinesFolder(), "a file where the folder should be");
    openVideo();
    mark(500);
    EXPECT_TRUE(health.documentsWritten());
    program->scheduler.advance(31);
    EXPECT_FALSE(health.documentsWritten());
    fs::remove(program->storage.timelinesFolder());
    program->scheduler.advance(31);  // tried again without another change
    EXPECT_TRUE(health.documentsWritten());
    EXPECT_TRUE(fs::exists(program->storage.timelineFile(video)));
}

TEST_F(BadInput, DefaultsOfTheWrongTypeGiveWayToTheFilesAndTheBackup) {
    UserDefaults& defaults = *machine.defaults;
    defaults.setText(layout::timelineKey(video), "text");
    defaults.setBoolean(layout::collectionKey(hockey.id), true);
    defaults.setData(layout::markupModeKey, toBytes("x"));
    defaults.setDate(layout::lastSelectedCollectionKey, Date{5});
    defaults.setText(layout::savedCollectionsKey, "text");
    restartAndBackUp();
    expectAllThere();

    // The list of videos has no document, so its second copy is used.
    for (const bool wrongType : {true, false}) {
        if (wrongType)
            defaults.setText(layout::videosDataKey, "text");
        else
            defaults.setData(layout::videosDataKey, toBytes("[{"));
        restartAndBackUp();
        expectAllThere();
    }

    // Without a readable date of the last backup, the backup is restored once.
    defaults.setText(layout::lastSyncDateKey, "yesterday");
    fs::remove(machine.secondCopy());
    restartAndBackUp();
    EXPECT_TRUE(logged("Differences found, restoring newer data from backup"));
    restart();
    EXPECT_TRUE(logged("✅ DataSync: Data is identical"));
    expectAllThere();
}

// The clock of the disk is ahead of that of the machine, which was set back by years.
TEST_F(BadInput, AClockSetBackRestoresNothing) {
    program->scheduler.setWallClock(Date{0});
    (void)program->sync.backUpNow();
    program->library.renameVideo(program->library.files().front(), "Later");
    restart();
    EXPECT_TRUE(logged("✅ DataSync: Data is identical"));
    EXPECT_EQ(program->library.videosData().front().customName, "Later");
    program->scheduler.setWallClock(Date{-1e9});
    program->storage.saveTimeline(marked, video);
    program->scheduler.advance(31);
    EXPECT_TRUE(fs::exists(program->storage.timelineFile(video))) << "timers go by elapsed time";
}

TEST_F(BadInput, ADamagedListOrRecordInTheBackupAffectsNothingElseAndIsReplaced) {
    spoil(plist());
    spoil(machine.backup() / "Timelines/BROKEN.json");
    machine.loseDefaults();
    fs::remove_all(machine.documents());
    restart();
    EXPECT_TRUE(logged("❌ DataSync: Error restoring UserDefaults - "));
    EXPECT_TRUE(program->library.videosData().empty());
    EXPECT_EQ(program->index.collections(), std::vector{hockey});
    EXPECT_EQ(program->storage.loadTimeline(video), marked) << "its record is still there";
    program->scheduler.advance(3);
    EXPECT_TRUE(program->propertyLists.decode(*readFile(plist())).ok());
    // The record remains after the list was lost, so that the video can be bound to it again.
    EXPECT_TRUE(fs::exists(machine.backup() / layout::timelinesFolder / (video + ".json")));
}

TEST_F(BadInput, ABackupOfNothingReplacesNothing) {
    fs::remove_all(machine.backup());
    restart();
    (void)program->sync.restoreFromBackup();
    program->scheduler.run();
    for (const char* item : {layout::collectionsFolder, layout::playFieldsFolder,
                             layout::timelinesFolder, "UserDefaults"})
        EXPECT_TRUE(logged(std::string("⚠️ DataSync: ") + item + " backup not found"));
    EXPECT_TRUE(logged("⚠️ DataSync: CollectionsBookmarks.json not found in backup"));
    expectAllThere();
    EXPECT_TRUE(fs::exists(program->storage.timelineFile(video)));
}

TEST_F(BadInput, WhatIsOfTheWrongKindInTheBackupReplacesNothing) {
    const fs::path copies = machine.backup() / "Tembrix-Stat/Collections";
    fs::remove_all(copies);
    spoil(copies, "a file where the folder should be");
    spoil(machine.backup() / layout::collectionIndexFile);
    (void)program->sync.restoreFromBackup();
    program->scheduler.run();
    EXPECT_TRUE(logged("❌ DataSync: Error restoring collections - "));
    EXPECT_TRUE(logged("❌ DataSync: Error restoring CollectionsBookmarks.json - "));
    EXPECT_TRUE(fs::exists(program->storage.collectionsFolder() / hockey.id / layout::tagsFile));
    expectAllThere();
}

// The backup was copied from a read-only medium.
TEST_F(BadInput, ARestoreLeavesDataThatCanBeWritten) {
    const fs::path copy = machine.backup() / "Tembrix-Stat/Collections" / hockey.id;
    const auto readOnly = fs::perms::owner_read | fs::perms::owner_exec;
    for (const auto& entry : fs::directory_iterator(copy))
        fs::permissions(entry.path(), fs::perms::owner_read);
    fs::permissions(copy, readOnly);
    fs::permissions(copy.parent_path(), readOnly);
    (void)program->sync.restoreFromBackup();
    const auto written = [&](const fs::path& path) {
        return (fs::status(path).permissions() & fs::perms::owner_write) != fs::perms::none;
    };
    const fs::path folder = program->storage.collectionsFolder() / hockey.id;
    EXPECT_TRUE(written(folder) && written(folder.parent_path()) &&
                written(folder / layout::tagsFile));
    fs::permissions(copy.parent_path(), fs::perms::owner_all);
    fs::permissions(copy, fs::perms::owner_all);
}

TEST_F(BadInput, FilesOfAKilledWriteAreRemovedAtTheNextLaunch) {
    const std::string left = ".new-" + freshId();
    const fs::path places[] = {index().parent_path(),
                               program->storage.timelinesFolder(),
                               program->storage.collectionsFolder() / hockey.id,
                               machine.backup(),
                               machine.backup() / layout::timelinesFolder,
                               machine.backup() / "Tembrix-Stat/Collections" / hockey.id};
    for (const auto& place : places)
        spoil(place / left);
    spoil(places[1] / ".new-notes", "the user's own");
    restart();
    for (const auto& place : places)
        EXPECT_FALSE(fs::exists(place / left)) << place;
    EXPECT_TRUE(fs::exists(places[1] / ".new-notes"));
    expectAllThere();
}

// The program ends while the index is written, after a restore has replaced it.
TEST_F(BadInput, AWriteUnderWayDoesNotReplaceARestoredIndex) {
    program->index.addOrUpdateCollection("NEW", "New");
    program->index.applicationWillTerminate();
    (void)program->sync.restoreFromBackup();
    program->scheduler.run();
    EXPECT_EQ(program->index.collections(), std::vector{hockey});
    restart();
    EXPECT_EQ(program->index.collections(), std::vector{hockey});
}

TEST(StandardCollections, AMissingOrBrokenListOrFileGivesWhatIsLeft) {
    TempFolder folder;
    EXPECT_TRUE(loadStandardCollections(folder.path(), "en").empty());
    for (const char* broken : {"", "{", "[]", R"({"collections": 5})", R"({"collections": []})"}) {
        folder.write("names.json", broken);
        EXPECT_TRUE(loadStandardCollections(folder.path(), "en").empty()) << broken;
    }
    folder.write("names.json",
                 R"({"collections": [{"language": "en", "names": ["Chess", "../Up"]}]})");
    folder.write("tags(Chess).json", "broken");
    const auto collections = loadStandardCollections(folder.path(), "ru");
    ASSERT_EQ(collections.size(), 2U);
    EXPECT_TRUE(collections.front().lists.tags.empty());
}

}  // namespace
}  // namespace tembrix
