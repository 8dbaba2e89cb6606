#include "base/files.h"

#include "core/storage/storage_fixture.h"

namespace tembrix {
namespace {

struct Collections : StorageTest {
    std::filesystem::path file(const std::string& id, const char* name) {
        return storage->collectionsFolder() / id / name;
    }
    void saveToDisk() {
        storage->scheduleSaveToDisk();
        scheduler.advance(30);
    }
    // The index file as the index would have written it.
    void writeIndex(const char* json) {
        folder.write("Documents/Tembrix-Stat/CollectionsBookmarks.json", json);
    }
};

TEST_F(Collections, ComeBackFromTheWorkingCopyOrTheFolder) {
    auto collection = collectionOf("C");
    collection.playField = PlayField{"f", "Field", "field.png", 105, 68, toBytes("mark")};
    storage->saveCollection(collection);
    EXPECT_EQ(storage->loadCollection("C"), collection);
    scheduler.advance(30);
    EXPECT_NE(fileText(file("C", "tags.json")).find("\n"), std::string::npos);  // pretty
    defaults.remove("collection_C");
    EXPECT_EQ(storage->loadCollection("C"), collection);
    EXPECT_EQ(defaults.data("collection_C"), encode(collection).value());
    EXPECT_EQ(scheduler.pendingTimers(), 0u);
    defaults.setData("collection_C", toBytes("{}"));
    EXPECT_EQ(storage->loadCollection("C"), collection);
    EXPECT_EQ(defaults.data("damaged_collection_C"), toBytes("{}"));
    EXPECT_FALSE(storage->loadCollection("unknown"));
    EXPECT_FALSE(storage->loadCollection(".."));
}

TEST_F(Collections, FourFilesAreNeededAndTwoAreNot) {
    for (const auto* name : {"tagGroups.json", "tags.json", "labelGroups.json", "labels.json"}) {
        storage->saveCollection(collectionOf("C"));
        storage->flushNow();
        std::filesystem::remove(file("C", name));
        defaults.remove("collection_C");
        EXPECT_FALSE(storage->loadCollection("C")) << name;
    }
    storage->saveCollection(collectionOf("C"));
    storage->flushNow();
    defaults.remove("collection_C");
    folder.write("Documents/Tembrix-Stat/Collections/C/timeEvents.json", R"({"timeEvents":[]})");
    folder.write("Documents/Tembrix-Stat/Collections/C/playField.json", "garbage");
    const auto loaded = storage->loadCollection("C");
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->timeEvents.empty());
    EXPECT_FALSE(loaded->playField);
}

TEST_F(Collections, AnEmptyListOfEventsLeavesTheOldFile) {
    auto collection = collectionOf("C");
    storage->saveCollection(collection);
    saveToDisk();
    collection.timeEvents.clear();
    storage->saveCollection(collection);
    saveToDisk();
    EXPECT_NE(fileText(file("C", "timeEvents.json")).find("First half"), std::string::npos);
    EXPECT_TRUE(storage->loadCollection("C")->timeEvents.empty());
}

TEST_F(Collections, ADeletedOneLeavesWithTheNextFlush) {
    storage->setCollectionIndex(&index);
    index.listed = {{"C", "name"}, {"D", "name"}};
    storage->saveCollection(collectionOf("C"));
    storage->saveCollection(collectionOf("D"));
    scheduler.advance(30);
    folder.write("Documents/Tembrix-Stat/Collections/note.txt", "of the user's");
    storage->deleteCollection("C");
    index.listed = {{"D", "name"}};
    EXPECT_TRUE(std::filesystem::exists(file("C", "tags.json")));
    scheduler.advance(30);
    EXPECT_FALSE(std::filesystem::exists(storage->collectionsFolder() / "C"));
    EXPECT_TRUE(std::filesystem::exists(file("D", "tags.json")));
    EXPECT_TRUE(std::filesystem::exists(storage->collectionsFolder() / "note.txt"));
}

TEST_F(Collections, TheFlushNeverRemovesWhatTheIndexLists) {
    storage->saveCollection(collectionOf("C"));
    storage->saveCollection(collectionOf("D"));
    scheduler.advance(30);
    defaults.remove("collection_C");  // the working copies are lost
    defaults.remove("collection_D");
    saveToDisk();  // no index yet
    EXPECT_TRUE(std::filesystem::exists(file("C", "tags.json")));
    storage->setCollectionIndex(&index);
    saveToDisk();  // the index file is missing
    writeIndex("[{\"id\"");
    saveToDisk();  // or broken
    EXPECT_TRUE(std::filesystem::exists(file("C", "tags.json")));
    EXPECT_TRUE(std::filesystem::exists(file("D", "tags.json")));
    index.listed = {{"C", "name"}};
    saveToDisk();
    EXPECT_TRUE(std::filesystem::exists(file("C", "tags.json")));
    EXPECT_FALSE(std::filesystem::exists(file("D", "tags.json")));
    index.listed = {};
    writeIndex("[]");
    saveToDisk();  // the last collection was deleted
    EXPECT_FALSE(std::filesystem::exists(file("C", "tags.json")));
}

TEST_F(Collections, OneThatDoesNotDecodeIsSkippedAndKeepsItsFolder) {
    storage->setCollectionIndex(&index);
    writeIndex("[]");
    storage->saveCollection(collectionOf("C"));
    scheduler.advance(30);
    defaults.setData("collection_C", toBytes("garbage"));
    storage->saveCollection(collectionOf("D"));
    scheduler.advance(30);
    EXPECT_TRUE(std::filesystem::exists(file("C", "tags.json")));
    EXPECT_TRUE(std::filesystem::exists(file("D", "tags.json")));
}

}  // namespace
}  // namespace tembrix
