#include "base/files.h"

#include "core/storage/data_layout.h"
#include "core/storage/saved_copies.h"
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
    // Writes the file of the index.
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
    EXPECT_NE(fileText(file("C", layout::tagsFile)).find("\n"), std::string::npos);  // indented
    defaults.remove(layout::collectionKey("C"));
    EXPECT_EQ(storage->loadCollection("C"), collection);
    EXPECT_EQ(defaults.data(layout::collectionKey("C")), encode(collection).value());
    EXPECT_EQ(scheduler.pendingTimers(), 0u);
    defaults.setData(layout::collectionKey("C"), toBytes("{}"));
    EXPECT_EQ(storage->loadCollection("C"), collection);
    EXPECT_EQ(defaults.data(layout::damagedKey(layout::collectionKey("C"))), toBytes("{}"));
    EXPECT_FALSE(storage->loadCollection("unknown"));
    EXPECT_FALSE(storage->loadCollection(".."));
}

TEST_F(Collections, FourFilesAreNeededAndTwoAreNot) {
    for (const auto* name :
         {layout::tagGroupsFile, layout::tagsFile, layout::labelGroupsFile, layout::labelsFile}) {
        storage->saveCollection(collectionOf("C"));
        storage->flushNow();
        std::filesystem::remove(file("C", name));
        defaults.remove(layout::collectionKey("C"));
        EXPECT_FALSE(storage->loadCollection("C")) << name;
    }
    storage->saveCollection(collectionOf("C"));
    storage->flushNow();
    defaults.remove(layout::collectionKey("C"));
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
    EXPECT_NE(fileText(file("C", layout::timeEventsFile)).find("First half"), std::string::npos);
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
    EXPECT_TRUE(std::filesystem::exists(file("C", layout::tagsFile)));
    scheduler.advance(30);
    EXPECT_FALSE(std::filesystem::exists(storage->collectionsFolder() / "C"));
    EXPECT_TRUE(std::filesystem::exists(file("D", layout::tagsFile)));
    EXPECT_TRUE(std::filesystem::exists(storage->collectionsFolder() / "note.txt"));
}

TEST_F(Collections, ADeletedOneDoesNotComeBackThroughARead) {
    struct Backup final : SavedCopies {
        std::function<void()> whileReading;
        std::filesystem::path copies;
        std::optional<TimelineLines> savedTimeline(const std::string&) override { return {}; }
        std::filesystem::path savedCollectionFolder(const std::string& id) const override {
            if (whileReading)
                whileReading();
            return copies / id;
        }
        void noteDamage() override {}
    } backup;
    storage->setSavedCopies(&backup);
    storage->setCollectionIndex(&index);
    storage->saveCollection(collectionOf("C"));
    storage->flushNow();
    backup.copies = folder.path() / "copies";
    std::filesystem::copy(storage->collectionsFolder(), backup.copies,
                          std::filesystem::copy_options::recursive);
    defaults.remove(layout::collectionKey("C"));
    folder.write("Documents/Tembrix-Stat/Collections/C/tags.json", "damaged");
    backup.whileReading = [&] { storage->deleteCollection("C"); };
    (void)storage->loadCollection("C");
    EXPECT_FALSE(defaults.data(layout::collectionKey("C")));
    EXPECT_FALSE(storage->loadCollection("C")) << "the folder still exists";
    writeIndex("[]");
    scheduler.advance(30);
    EXPECT_FALSE(std::filesystem::exists(storage->collectionsFolder() / "C"));

    // A restore or a save brings one back.
    storage->forgetWritten();
    std::filesystem::copy(backup.copies, storage->collectionsFolder(),
                          std::filesystem::copy_options::recursive);
    EXPECT_TRUE(storage->loadCollection("C"));
    storage->deleteCollection("C");
    storage->saveCollection(collectionOf("C"));
    EXPECT_TRUE(storage->loadCollection("C"));
}

TEST_F(Collections, TheFlushNeverRemovesWhatTheIndexLists) {
    storage->saveCollection(collectionOf("C"));
    storage->saveCollection(collectionOf("D"));
    scheduler.advance(30);
    defaults.remove(layout::collectionKey("C"));  // lose the working copies
    defaults.remove(layout::collectionKey("D"));
    saveToDisk();  // there is no index yet
    EXPECT_TRUE(std::filesystem::exists(file("C", layout::tagsFile)));
    storage->setCollectionIndex(&index);
    saveToDisk();  // the index file is missing
    writeIndex("[{\"id\"");
    saveToDisk();  // the index file is damaged
    EXPECT_TRUE(std::filesystem::exists(file("C", layout::tagsFile)));
    EXPECT_TRUE(std::filesystem::exists(file("D", layout::tagsFile)));
    index.listed = {{"C", "name"}};
    saveToDisk();
    EXPECT_TRUE(std::filesystem::exists(file("C", layout::tagsFile)));
    EXPECT_FALSE(std::filesystem::exists(file("D", layout::tagsFile)));
    index.listed = {};
    writeIndex("[]");
    saveToDisk();  // the last collection was deleted
    EXPECT_FALSE(std::filesystem::exists(file("C", layout::tagsFile)));
}

TEST_F(Collections, OneThatDoesNotDecodeIsSkippedAndKeepsItsFolder) {
    storage->setCollectionIndex(&index);
    writeIndex("[]");
    storage->saveCollection(collectionOf("C"));
    scheduler.advance(30);
    defaults.setData(layout::collectionKey("C"), toBytes("garbage"));
    storage->saveCollection(collectionOf("D"));
    scheduler.advance(30);
    EXPECT_TRUE(std::filesystem::exists(file("C", layout::tagsFile)));
    EXPECT_TRUE(std::filesystem::exists(file("D", layout::tagsFile)));
}

}  // namespace
}  // namespace tembrix
