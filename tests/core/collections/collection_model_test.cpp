#include "core/storage/data_layout.h"
#include "fakes/collections_fixture.h"

namespace tembrix {
namespace {

struct Model : CollectionsFixture {
    CustomCollectionManager reload(const std::string& name) {
        CollectionBookmark saved;
        saved.name = name;
        return {*services, saved};
    }
    static TagFormData form(const std::string& name, std::optional<std::string> hotkey = {}) {
        TagFormData data;
        data.name = name;
        data.hexColor = "0000FF";
        data.defaultTimeBefore = 5;
        data.defaultTimeAfter = 3;
        data.hotkey = std::move(hotkey);
        return data;
    }
    static CollectionBookmark bookmark(const std::string& id, const std::string& name) {
        CollectionBookmark result;
        result.id = id;
        result.name = name;
        return result;
    }
};

TEST_F(Model, NamesAreUniqueAndAnEmptyNameKeepsTheOldOne) {
    saveCollection("Hockey");
    saveCollection("Hockey");
    const auto third = saveCollection("  Hockey\n");
    std::vector<std::string> names;
    for (const auto& info : index->collections())
        names.push_back(info.name);
    EXPECT_EQ(names, (std::vector<std::string>{"Hockey", "Hockey (1)", "Hockey (2)"}));

    CustomCollectionManager existing(*services, bookmark(third, "Hockey (2)"));
    EXPECT_TRUE(existing.isEditingExisting());
    EXPECT_EQ(existing.collectionID(), third);
    existing.setCollectionName(" ");
    existing.saveCollection();
    EXPECT_EQ(existing.collectionName(), "Hockey (2)");
    existing.setCollectionName("Hockey");
    existing.saveCollection();
    EXPECT_EQ(existing.collectionName(), "Hockey (2)") << "its own name does not count";
    existing.setCollectionName("Bandy");
    existing.saveCollection();
    EXPECT_EQ(existing.collectionName(), "Bandy");

    // An unchanged name is kept even if another collection has it as well.
    index->addOrUpdateCollection("other", "Bandy");
    existing.saveCollection();
    EXPECT_EQ(existing.collectionName(), "Bandy");

    CustomCollectionManager nameless(*services);
    EXPECT_EQ(nameless.collectionName(), "myCollection");
    nameless.setCollectionName("");
    nameless.saveCollection();
    EXPECT_EQ(nameless.collectionName(), nameless.collectionID());
}

TEST_F(Model, SavingStoresListsAndReportsRenamesAtOnce) {
    const auto changed = record<events::CollectionDataChanged>();
    const auto updated = record<events::TagUpdated>();
    CustomCollectionManager collection(*services);
    collection.setCollectionName("Mine");
    const auto group = collection.addTagGroup("Attack");
    const auto shot = collection.addTag(form("Shot", "S"), group.id);
    ASSERT_TRUE(shot.has_value());
    EXPECT_EQ(shot->primaryID, shot->id);
    EXPECT_EQ(collection.addTag(form("Save", "S"), group.id)->hotkey, std::nullopt);
    EXPECT_FALSE(collection.addTag(form("Lost"), "no such group").has_value());
    EXPECT_FALSE(collection.updateTag(collection.lists().tags[1].id, form("Save", "S")))
        << "the key is another tag's";
    EXPECT_TRUE(collection.updateTag(shot->id, form("Shot on goal", "S")));
    EXPECT_TRUE(collection.updateTag(shot->id, form("Strike", "S")));
    EXPECT_TRUE(index->collections().empty()) << "not listed before the first save";
    collection.saveCollection();
    EXPECT_TRUE(changed->empty()) << "told asynchronously";
    ASSERT_EQ(updated->size(), 1u);
    EXPECT_EQ(updated->front().newName, "Strike");
    scheduler.run();
    ASSERT_EQ(changed->size(), 1u);
    EXPECT_EQ(changed->front().collectionName, "Mine");
    collection.saveCollection();
    EXPECT_EQ(updated->size(), 1u);

    EXPECT_EQ(reload("Mine").lists(), collection.lists());
    CustomCollectionManager missing(*services);
    EXPECT_FALSE(missing.loadCollection("Other"));
    EXPECT_TRUE(log.has("❌ CustomCollectionManager: Collection 'Other' not found"));
    index->addOrUpdateCollection("id", "Folderless");
    EXPECT_FALSE(missing.loadCollection("Folderless"));
    EXPECT_TRUE(log.has("❌ CustomCollectionManager: Failed to load collection 'Folderless'"));
}

TEST_F(Model, DeletingRemovesOnlyItemsThatNoOtherGroupLists) {
    CollectionData data;
    data.id = "id";
    data.tags = {makeTag("a", "A"), makeTag("b", "B"), makeTag("c", "C")};
    data.tagGroups = {{"g1", "One", {"a", "b"}}, {"g2", "Two", {"b", "c"}}};
    data.labels = {{"x", "X", ""}, {"y", "Y", ""}};
    data.labelGroups = {{"l1", "One", {"x", "y"}}, {"l2", "Two", {"y"}}};
    data.tags[2].lablesGroup = {"l1", "l2"};
    data.tags[2].labelHotkeys = {{"x", "1"}, {"y", "2"}};
    storage->saveCollection(data);
    index->addOrUpdateCollection("id", "Mine");
    auto collection = reload("Mine");

    collection.deleteTagGroup("g1");
    ASSERT_EQ(collection.lists().tags.size(), 2u);
    EXPECT_EQ(collection.lists().tags[0].id, "b");
    collection.deleteLabelGroup("l1");
    ASSERT_EQ(collection.lists().labels.size(), 1u);
    const auto& c = collection.lists().tags[1];
    EXPECT_EQ(c.lablesGroup, std::vector<std::string>{"l2"});
    EXPECT_EQ(*c.labelHotkeys, (std::map<std::string, std::string>{{"y", "2"}}));
    collection.deleteLabel("y");
    EXPECT_TRUE(collection.lists().labelGroups[0].lables.empty());
    EXPECT_TRUE(collection.lists().tags[1].labelHotkeys->empty());
    collection.deleteTag("b");
    EXPECT_EQ(collection.lists().tagGroups[0].tags, std::vector<std::string>{"c"});

    const auto stray = collection.addLabel("Stray", "", "no such group");
    EXPECT_EQ(collection.lists().labels.back(), stray);
    const auto event = collection.addTimeEvent("Half");
    collection.updateTimeEvent(event, "First half");
    EXPECT_EQ(collection.lists().timeEvents.front().name, "First half");
    collection.renameTagGroup("g2", "Second");
    EXPECT_EQ(collection.lists().tagGroups[0], (TagGroup{"g2", "Second", {"c"}}));
}

TEST_F(Model, TheFieldPictureIsCopiedAndIntervalTagsKeepTheirFlag) {
    CustomCollectionManager collection(*services);
    collection.setCollectionName("Mine/Yours");
    const auto group = collection.addTagGroup("Phases");
    auto interval = form("Possession");
    interval.isInterval = true;
    const auto tag = collection.addTag(interval, group.id);
    EXPECT_TRUE(collection.setTagMapEnabled(tag->id, true));
    EXPECT_FALSE(collection.setTagMapEnabled("other", true));

    EXPECT_FALSE(collection.setFieldImage(folder.path() / "missing.png"));
    EXPECT_TRUE(log.contains("❌ Error setting field image: "));
    EXPECT_FALSE(collection.playField().has_value());

    const auto picture = folder.write("pitch.png", "first");
    const auto record = storage->dataFolder() / layout::playFieldsFolder / "Mine_Yours.json";
    std::filesystem::create_directories(record / "in the way");
    EXPECT_FALSE(collection.setFieldImage(picture)) << "its record cannot be written";
    EXPECT_FALSE(collection.playField().has_value());
    std::filesystem::remove_all(record);
    ASSERT_TRUE(collection.setFieldImage(picture));
    const auto copy =
        storage->dataFolder() / layout::playFieldsFolder / collection.playField()->imagePath;
    EXPECT_EQ(copy.parent_path(), storage->dataFolder() / layout::playFieldsFolder);
    EXPECT_EQ(fileText(copy), "first");
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(copy).replace_extension(".json")));
    collection.setFieldSize(105, 68);
    const auto id = collection.playField()->id;
    EXPECT_TRUE(collection.setFieldImage(copy)) << "a picture may replace itself";
    folder.write("pitch.png", "second");
    ASSERT_TRUE(collection.setFieldImage(picture));
    EXPECT_EQ(collection.playField()->id, id);
    EXPECT_EQ(collection.playField()->width, 105);
    EXPECT_EQ(bookmarks.make(copy), collection.playField()->imageBookmark);
    EXPECT_EQ(reload("Mine/Yours").playField(), collection.playField());

    // After a rename the name can be used again, but the picture still exists.
    collection.setCollectionName("Renamed");
    collection.saveCollection();
    CustomCollectionManager next(*services);
    next.setCollectionName("Mine/Yours");
    ASSERT_TRUE(next.setFieldImage(folder.write("other.png", "other")));
    EXPECT_EQ(fileText(copy), "second");
    EXPECT_EQ(fileText(copy.parent_path() / next.playField()->imagePath), "other");
    EXPECT_EQ(reload("Renamed").playField()->imagePath, copy.filename());

    collection.removeField();
    EXPECT_FALSE(reload("Renamed").playField().has_value()) << "saved at once";
    EXPECT_TRUE(std::filesystem::exists(copy)) << "deleted after that";
    scheduler.run();
    EXPECT_FALSE(std::filesystem::exists(copy));
    EXPECT_FALSE(collection.playField().has_value());
    EXPECT_EQ(collection.lists().tags[0].mapEnabled, false);
    EXPECT_EQ(collection.lists().tags[0].isInterval, true);
    EXPECT_FALSE(reload("Renamed").playField().has_value());
}

TEST_F(Model, ARemovedPictureGoesOnlyWhenNothingNeedsIt) {
    const auto picture = folder.write("pitch.png", "first");
    const auto fields = storage->dataFolder() / layout::playFieldsFolder;
    const auto removeFromEditor = [&](const std::string& name) {
        CustomCollectionManager editor(*services);
        editor.loadCollection(name);
        editor.removeField();
    };
    for (const auto* name : {"One", "Two", "Three"}) {
        CustomCollectionManager collection(*services);
        collection.setCollectionName(name);
        ASSERT_TRUE(collection.setFieldImage(picture));
    }
    removeFromEditor("One");  // the editor is closed at once
    scheduler.run();
    EXPECT_FALSE(std::filesystem::exists(fields / "One.png"));

    // A new picture is set before the old one has been deleted.
    removeFromEditor("Two");
    CustomCollectionManager editor(*services);
    editor.loadCollection("Two");
    ASSERT_TRUE(editor.setFieldImage(picture));
    scheduler.run();
    EXPECT_TRUE(std::filesystem::exists(fields / reload("Two").playField()->imagePath));

    // The removal cannot be stored, and the process is killed.
    defaults.refuse("disk full");
    removeFromEditor("Three");
    scheduler.run();
    EXPECT_TRUE(std::filesystem::exists(fields / "Three.png"));
}

}  // namespace
}  // namespace tembrix
