#include <thread>

#include "base/files.h"

#include "core/collections/duplicate_collections.h"
#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "fakes/collections_fixture.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct Index : CollectionsFixture {
    std::vector<CollectionInfo> onDisk() const {
        const auto bytes = readFile(index->indexFile());
        return bytes ? *decode<std::vector<CollectionInfo>>(*bytes) : std::vector<CollectionInfo>{};
    }
    fs::path collectionFolder(const std::string& id) {
        const auto path = storage->collectionsFolder() / pathFromText(id);
        fs::create_directories(path);
        return path;
    }
    void saveWorkingCopy(const std::string& id, const std::string& tagName) {
        CollectionData data;
        data.id = id;
        data.tags = {makeTag("tag", tagName)};
        storage->saveCollection(data);
    }
};

TEST_F(Index, ABurstIsOneWriteTwoSecondsAfterItsFirstChange) {
    index->addOrUpdateCollection("1", "Hockey");
    scheduler.advance(1.5);
    index->addOrUpdateCollection("2", "Football");
    index->addOrUpdateCollection("1", "Ice hockey");
    scheduler.advance(0.4);
    EXPECT_TRUE(onDisk().empty());
    scheduler.advance(0.2);
    const std::vector<CollectionInfo> expected{{"1", "Ice hockey"}, {"2", "Football"}};
    EXPECT_EQ(onDisk(), expected);
    restart();
    EXPECT_EQ(index->collections(), expected);

    fs::remove(index->indexFile());
    index->removeCollection("3");
    scheduler.advance(5);
    EXPECT_FALSE(fs::exists(index->indexFile())) << "nothing changed, nothing is written";
    index->rewriteIndex();
    scheduler.advance(2);
    EXPECT_EQ(onDisk(), expected) << "a lost file is written again";
    EXPECT_TRUE(log.has("⚠️ CollectionsBookmarks: Collection 3 not found in cache"));
}

TEST_F(Index, ARestartShowsTheNamesThatCountNow) {
    const auto namesAfterRestart = [&] {
        restart();
        std::string names;
        for (const auto& info : index->collections())
            names += info.name + " ";
        return names;
    };
    index->addOrUpdateCollection("1", "Hockey");
    EXPECT_EQ(namesAfterRestart(), "Hockey ") << "killed before the file was written";
    scheduler.advance(2);
    index->addOrUpdateCollection("1", "Football");
    index->removeCollection("1");
    index->addOrUpdateCollection("2", "Chess");
    EXPECT_EQ(namesAfterRestart(), "Chess ");
    scheduler.advance(2);
    // Nothing is unsaved, so another file in its place is read.
    folder.write(index->indexFile(), R"([{"id": "3", "name": "From another machine"}])");
    EXPECT_EQ(namesAfterRestart(), "From another machine ");
    // A change is unsaved when a restore replaces the file.
    index->addOrUpdateCollection("4", "Newer");
    const auto restored = index->replaceIndexFile([&]() -> Result<void> {
        folder.write(index->indexFile(), R"([{"id": "5", "name": "Restored"}])");
        return {};
    });
    EXPECT_TRUE(restored.ok());
    EXPECT_EQ(namesAfterRestart(), "Restored ");
    EXPECT_EQ(index->secondCopy()->front().name, "Restored");
    // The restored file is lost or damaged.
    folder.write(index->indexFile(), "damaged");
    EXPECT_EQ(namesAfterRestart(), "Restored ");
}

TEST_F(Index, TheLastRemovedCollectionStaysRemoved) {
    index->addOrUpdateCollection("1", "Hockey");
    scheduler.advance(2);
    index->removeCollection("1");
    EXPECT_TRUE(index->collections().empty()) << "the file still lists it";
    scheduler.advance(2);
    EXPECT_TRUE(onDisk().empty());
    EXPECT_TRUE(log.has("✅ CollectionsBookmarks: Removed collection 1 from cache"));
}

TEST_F(Index, ChangesFromOtherThreadsAreSavedAlsoByATermination) {
    std::thread([&] { index->addOrUpdateCollection("1", "Hockey"); }).join();
    index->applicationWillTerminate();  // before the main thread has started the timer
    scheduler.run();
    EXPECT_EQ(onDisk().size(), 1u);
    EXPECT_EQ(scheduler.pendingTimers(), 0u);
    std::thread([&] { index->addOrUpdateCollection("2", "Football"); }).join();
    scheduler.advance(2);
    EXPECT_EQ(onDisk().size(), 2u);
}

TEST_F(Index, ABrokenFileReadsAsEmptyAndAFailedWriteKeepsTheList) {
    folder.write(index->indexFile(), "[{\"id\": \"1\"}]");
    EXPECT_TRUE(index->collections().empty());
    EXPECT_TRUE(log.contains("❌ CollectionsBookmarks: Error loading collections - "));
    fs::remove(index->indexFile());
    fs::create_directories(index->indexFile() / "in the way");
    index->addOrUpdateCollection("1", "Hockey");
    scheduler.advance(2);
    EXPECT_TRUE(log.contains("❌ CollectionsBookmarks: Error saving collections - "));
    EXPECT_EQ(index->collections().size(), 1u);
}

TEST_F(Index, BookmarksNeedTheFourRequiredFiles) {
    for (const auto* id : {"whole", "partial", "gone"})
        index->addOrUpdateCollection(id, std::string("Name of ") + id);
    for (const auto* id : {"whole", "partial"})
        for (const auto* file :
             {layout::tagGroupsFile, layout::tagsFile, layout::labelGroupsFile, layout::labelsFile})
            folder.write(collectionFolder(id) / file, "{}");
    fs::remove(collectionFolder("partial") / layout::labelsFile);
    const auto list = index->loadBookmarks();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].id, "whole");
    EXPECT_FALSE(list[0].tagsBookmark.empty());
    EXPECT_TRUE(list[0].timeEventsBookmark.empty());
    EXPECT_FALSE(list[0].playFieldBookmark.has_value());
    EXPECT_TRUE(log.has("⚠️ CollectionsBookmarks: Required files missing for Name of partial"));
    EXPECT_TRUE(log.has(
        "⚠️ CollectionsBookmarks: Collection folder not found for Name of gone (id: gone)"));
    EXPECT_TRUE(log.has("📚 CollectionsBookmarksManager: Loaded 1 collection bookmarks"));
}

TEST_F(Index, TheOlderListIsMigratedOnceIntoAnEmptyIndex) {
    CollectionBookmark old;
    old.id = "1";
    old.name = "Hockey";
    defaults.setData(layout::savedCollectionsKey, *encode(std::vector{old}));
    index->migrateSavedCollections();
    EXPECT_EQ(index->collections(), (std::vector<CollectionInfo>{{"1", "Hockey"}}));
    EXPECT_TRUE(log.has("✅ CollectionsBookmarks: Migrated 1 collections from UserDefaults"));
    index->removeCollection("1");
    index->migrateSavedCollections();
    EXPECT_TRUE(index->collections().empty());
}

TEST(DuplicateGroups, KeepTheNewestThenTheHighestNumber) {
    const auto kept = [](const std::vector<CollectionFolder>& folders) {
        const auto groups = groupDuplicates(folders);
        EXPECT_EQ(groups.size(), 1u);
        return groups.begin()->first + " <- " + groups.begin()->second.front().name;
    };
    EXPECT_EQ(kept({{"Hockey", {1}}, {"Hockey (1)", {2}}}), "Hockey <- Hockey (1)");
    EXPECT_EQ(kept({{"Hockey (2)", {1}}, {"Hockey", {2}}}), "Hockey <- Hockey");
    EXPECT_EQ(kept({{"Hockey (9)", {1}}, {"Hockey (10)", {1}}, {"Hockey", {1}}}),
              "Hockey <- Hockey (10)");
    EXPECT_EQ(kept({{"Game (2024)", {1}}}), "Game <- Game (2024)");
    for (const auto* name : {"(1)", "Hockey (a)", "Hockey (1) old", "Hockey ()",
                             "D9D7B05C-0F2C-4E6A-9E0B-3E5B7F7B4E51"})
        EXPECT_EQ(baseCollectionName(name), name);
}

TEST_F(Index, CleanUpLeavesOneFolderPerNameAndTheSameIndexInMemoryAndFile) {
    const auto changes = record<events::CollectionDataChanged>();
    for (const auto* id : {"Hockey (1)", "Football", "UUID", "Lost", "Fresh"})
        index->addOrUpdateCollection(id, std::string("Name of ") + id);
    defaults.setData(layout::collectionKey("Fresh"),
                     toBytes("{}"));  // saved, but its folder is not flushed yet
    for (const auto* id : {"Hockey (1)", "Hockey (2)", "Football", "Football (1)", "UUID"}) {
        folder.write(collectionFolder(id) / layout::tagsFile, id);
        std::this_thread::yield();
    }
    fs::create_directories(storage->collectionsFolder() / ".hidden (1)");
    saveWorkingCopy("Hockey (1)", "the loser's");
    saveWorkingCopy("Hockey (2)", "the kept one's");
    saveWorkingCopy("Hockey", "of a folder that is not there");
    saveWorkingCopy("Football", "the loser's");
    index->cleanUpDuplicateCollections();
    scheduler.run();

    EXPECT_EQ(changes->size(), 1u);
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(storage->collectionsFolder()))
        names.insert(pathText(entry.path().filename()));
    EXPECT_EQ(names, (std::set<std::string>{"Hockey", "Football", "UUID", ".hidden (1)"}));
    EXPECT_EQ(fileText(storage->collectionsFolder() / "Hockey" / layout::tagsFile), "Hockey (2)");
    EXPECT_EQ(
        defaults.keys(layout::collectionPrefix),
        (std::vector<std::string>{layout::collectionKey("Fresh"), layout::collectionKey("Hockey")}))
        << "the next flush would bring the others' folders back";
    EXPECT_EQ(storage->loadCollection("Hockey")->tags[0].name, "the kept one's");
    EXPECT_EQ(storage->loadCollection("Hockey")->id, "Hockey");
    const std::vector<CollectionInfo> expected{{"Football", "Name of Football"},
                                               {"Hockey", "Hockey"},
                                               {"UUID", "Name of UUID"},
                                               {"Fresh", "Name of Fresh"}};
    EXPECT_EQ(index->collections(), expected);
    EXPECT_EQ(onDisk(), expected);
    // The next change must not restore the old ids.
    index->addOrUpdateCollection("New", "New");
    scheduler.advance(2);
    EXPECT_EQ(onDisk().size(), 5u);

    collectionFolder("Hockey (7)");
    index->cleanUpDuplicateCollections();
    EXPECT_TRUE(fs::exists(storage->collectionsFolder() / "Hockey (7)"));
    EXPECT_TRUE(
        log.has("✅ CollectionsBookmarks: Deduplication already done (from Keychain), skipping"));
}

TEST_F(Index, CleanUpFlagsItselfDoneAlsoWithNothingToDo) {
    defaults.setBoolean(layout::collectionsDeduplicatedKey, true);
    index->cleanUpDuplicateCollections();
    EXPECT_TRUE(log.has(
        "✅ CollectionsBookmarks: Migrated deduplication flag from UserDefaults to Keychain"));
    EXPECT_FALSE(defaults.boolean(layout::collectionsDeduplicatedKey));
    EXPECT_EQ(asText(*keychain.get(layout::collectionsDeduplicatedKey)), "true");

    keychain.set(toBytes("no"), layout::collectionsDeduplicatedKey);
    folder.write(storage->collectionsFolder(), "a file in the folder's place");
    index->cleanUpDuplicateCollections();
    EXPECT_TRUE(log.contains("❌ CollectionsBookmarks: Error cleaning up duplicates - "));
    EXPECT_EQ(asText(*keychain.get(layout::collectionsDeduplicatedKey)), "true");
}

}  // namespace
}  // namespace tembrix
