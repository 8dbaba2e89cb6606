#include <functional>
#include <map>
#include <utility>

#include "core/keyboard/hot_key_manager.h"
#include "core/storage/data_layout.h"
#include "fakes/collections_fixture.h"

namespace tembrix {
namespace {

struct Registry final : HotkeyRegistry {
    std::vector<Tag> tags;
    TagCollection collection;
    void registerHotkeys(const std::vector<Tag>& now, const TagCollection& of) override {
        tags = now;
        collection = of;
    }
};

struct Library : CollectionsFixture {
    FakeLocale locale;
    Registry registry;
    std::unique_ptr<TagLibraryManager> library;

    Library() {
        folder.write("resources/names.json",
                     R"({"collections": [{"language": "en", "names": ["Hockey", "Football"]}]})");
        writeTags("Hockey", {"shot", "save"});
        writeTags("Football", {"goal"});
    }
    ~Library() override { library.reset(); }

    void writeTags(const std::string& collection, const std::vector<std::string>& ids) {
        std::string json;
        for (const auto& id : ids)
            json += (json.empty() ? "" : ",") + ("{\"id\": \"" + id + "\", \"name\": \"" + id) +
                    "\", \"description\": \"\", \"color\": \"FF0000\", \"defaultTimeBefore\": 1, "
                    "\"defaultTimeAfter\": 1, \"lablesGroup\": []}";
        folder.write("resources/tags(" + collection + ").json", "{\"tags\": [" + json + "]}");
    }
    void start() {
        library.reset();
        library =
            std::make_unique<TagLibraryManager>(*services, folder.path() / "resources", locale);
        library->start();
        library->setHotkeyRegistry(&registry);
    }
    void storeUserCollection(const std::string& id, const std::string& name,
                             const std::vector<Tag>& tags) {
        CollectionData data;
        data.id = id;
        data.tags = tags;
        data.timeEvents = {{"event of " + id, "Event"}};
        storage->saveCollection(data);
        index->addOrUpdateCollection(id, name);
    }
    void rename(const std::string& id, const std::string& name, const std::string& newName) {
        CollectionBookmark existing;
        existing.id = id;
        existing.name = name;
        CustomCollectionManager editor(*services, existing);
        editor.setCollectionName(newName);
        editor.saveCollection();
        scheduler.run();
    }
    std::vector<std::string> activeTags() const {
        std::vector<std::string> ids;
        for (const auto& tag : library->active->tags)
            ids.push_back(tag.id);
        return ids;
    }
    using Ids = std::vector<std::string>;
};

TEST_F(Library, StartsWithTheFirstStandardCollectionAndMergesTheRestInTheBackground) {
    storeUserCollection("1", "Mine", {makeTag("shot", "My shot"), makeTag("own", "Own")});
    storeUserCollection("2", "Later", {makeTag("own", "Another")});
    index->addOrUpdateCollection("3", "Damaged");
    scheduler.run();
    const auto finished = record<events::CollectionsLoadingFinished>();
    start();
    EXPECT_EQ(activeTags(), (Ids{"shot", "save"}));
    EXPECT_EQ(registry.tags.size(), 2u);
    EXPECT_EQ(library->tagById("shot")->name, "shot") << "lookups work before the load is done";
    EXPECT_EQ(library->tagById("own"), nullptr);
    scheduler.run();
    EXPECT_FALSE(finished->empty());
    EXPECT_EQ(library->tagById("shot")->name, "My shot") << "a user collection comes first";
    EXPECT_EQ(library->tagById("own")->name, "Own");
    EXPECT_NE(library->tagById("goal"), nullptr);
    EXPECT_EQ(library->merged->tags.size(), 4u);
    EXPECT_EQ(library->active->tags[0].name, "shot") << "the active list stays";
    EXPECT_TRUE(log.has("📚 TagLibraryManager: Loading 3 user collections"));
    EXPECT_TRUE(log.has("❌ TagLibraryManager: Failed to load collection 'Damaged'"));
    EXPECT_TRUE(log.has(
        "✅ TagLibraryManager: Successfully loaded collection 'Mine' - tags: 2, tagGroups: 0"));
    EXPECT_TRUE(log.has(
        "✅ TagLibraryManager: Finished loading all collections - total tags: 4, tagGroups: 0"));
}

TEST_F(Library, RestoresTheLastChoiceAndFallsBack) {
    storeUserCollection("1", "Mine", {makeTag("own", "Own")});
    start();
    scheduler.run();
    library->selectUserCollection("1");
    EXPECT_EQ(activeTags(), Ids{"own"}) << "read before, so at once";
    EXPECT_EQ(defaults.text(layout::lastSelectedCollectionKey), "Mine");
    start();
    EXPECT_EQ(*library->currentCollectionType, TagCollection::user("Mine", "1"));
    EXPECT_EQ(*library->selectedStandardCollectionName, "Mine");
    EXPECT_EQ(registry.collection, TagCollection::user("Mine", "1"));

    // Earlier versions stored only the name.
    defaults.remove(layout::lastSelectedCollectionIdKey);
    start();
    EXPECT_EQ(*library->currentCollectionType, TagCollection::user("Mine", "1"));
    defaults.remove(layout::lastSelectedCollectionIdKey);
    defaults.setText(layout::lastSelectedCollectionKey, "Football");
    start();
    EXPECT_EQ(activeTags(), Ids{"goal"});
    storeUserCollection("2", "Football", {makeTag("mine", "Mine")});
    start();
    EXPECT_EQ(activeTags(), Ids{"mine"}) << "a user collection wins over a standard one";

    defaults.setText(layout::lastSelectedCollectionKey, "Deleted");
    defaults.setText(layout::lastSelectedCollectionIdKey, "deleted");
    start();
    EXPECT_EQ(*library->selectedStandardCollectionName, "Hockey");
    defaults.setBoolean(layout::lastSelectedCollectionKey, true);  // a value of another type
    start();
    EXPECT_EQ(*library->selectedStandardCollectionName, "Hockey");
    folder.write("resources/names.json", "damaged");
    start();
    EXPECT_TRUE(activeTags().empty());
    EXPECT_FALSE(library->selectedStandardCollectionName->has_value());
}

TEST_F(Library, AChoiceThatHadToBeReadGivesWayToALaterOne) {
    start();
    scheduler.run();
    storeUserCollection("1", "Mine", {makeTag("own", "Own")});
    library->selectUserCollection("1");
    EXPECT_EQ(activeTags(), (Ids{"shot", "save"})) << "not read yet";
    library->selectStandardCollection("Football");
    scheduler.run();
    EXPECT_EQ(activeTags(), Ids{"goal"});
    events.post(events::CollectionDataChanged{});
    library->selectUserCollection("1");
    scheduler.run();
    EXPECT_EQ(activeTags(), Ids{"own"});
    library->selectStandardCollection("No such collection");
    EXPECT_EQ(activeTags(), Ids{"own"});
}

TEST_F(Library, ANamedChangeRefreshesTheActiveListsOnly) {
    storeUserCollection("1", "Mine", {makeTag("own", "Own", "a")});
    start();
    scheduler.run();
    library->selectUserCollection("1");
    for (const auto* id : {"half", "lead", "half"})
        library->toggleTimeEvent(id);
    EXPECT_EQ(*library->selectedTimeEvents, std::set<std::string>{"lead"});
    const auto refreshed = record<events::CurrentCollectionRefreshed>();
    storeUserCollection("1", "Mine", {makeTag("own", "Renamed"), makeTag("new", "New")});
    storeUserCollection("2", "Other", {makeTag("elsewhere", "Elsewhere")});
    for (const auto* name : {"Other", "Unknown"})
        events.post(events::CollectionDataChanged{name});
    EXPECT_TRUE(refreshed->empty());
    EXPECT_EQ(activeTags(), Ids{"own"});
    events.post(events::CollectionDataChanged{"Mine"});
    EXPECT_EQ(refreshed->size(), 1u);
    EXPECT_EQ(activeTags(), (Ids{"own", "new"}));
    EXPECT_EQ(registry.tags.size(), 2u);
    EXPECT_TRUE(library->selectedTimeEvents->empty());
    EXPECT_EQ(library->tagById("new"), nullptr) << "the merged lists stay as they are";
}

TEST_F(Library, ANamelessChangeReloadsEverythingOnceAtATime) {
    storeUserCollection("1", "Mine", {makeTag("own", "Own")});
    start();
    scheduler.run();
    const auto started = record<events::CollectionsLoadingStarted>();
    const auto finished = record<events::CollectionsLoadingFinished>();
    storeUserCollection("2", "Second", {makeTag("second", "Second")});
    events.post(events::CollectionDataChanged{});
    EXPECT_TRUE(library->isLoadingCollections());
    events.post(events::CollectionDataChanged{});
    EXPECT_EQ(started->size(), 1u);
    scheduler.run();
    EXPECT_EQ(finished->size(), 1u);
    EXPECT_FALSE(library->isLoadingCollections());
    EXPECT_NE(library->tagById("second"), nullptr);
}

TEST_F(Library, TheActiveCollectionFollowsARename) {
    storeUserCollection("id", "Old", {makeTag("tag", "Tag")});
    start();
    scheduler.run();
    library->selectUserCollection("id");
    scheduler.run();
    rename("id", "Old", "New");
    for (int starts = 0; starts < 2; ++starts, start(), scheduler.run()) {
        EXPECT_EQ(*library->currentCollectionType, TagCollection::user("New", "id"));
        EXPECT_EQ(*library->selectedStandardCollectionName, "New");
        EXPECT_EQ(activeTags(), std::vector<std::string>{"tag"});
        EXPECT_EQ(registry.collection, TagCollection::user("New", "id"));
    }

    // A collection that was removed from the index by other code is not active any more.
    index->removeCollection("id");
    events.post(events::CollectionDataChanged{});
    scheduler.run();
    EXPECT_EQ(*library->selectedStandardCollectionName, "Hockey");
    EXPECT_EQ(activeTags(), (std::vector<std::string>{"shot", "save"}));
}

TEST_F(Library, TheChosenCollectionStaysChosenWhateverHappensToNames) {
    const auto expectChosen = [&](const std::string& name, const std::string& id, const Ids& tags) {
        scheduler.run();
        EXPECT_EQ(*library->currentCollectionType, TagCollection::user(name, id));
        EXPECT_EQ(activeTags(), tags);
        start();
        EXPECT_EQ(*library->currentCollectionType, TagCollection::user(name, id)) << "restarted";
        EXPECT_EQ(activeTags(), tags);
    };
    storeUserCollection("1", "First", {makeTag("one", "One")});
    storeUserCollection("2", "Second", {makeTag("two", "Two")});
    start();
    scheduler.run();
    library->selectUserCollection("2");
    rename("1", "First", "Other");
    rename("2", "Second", "First");
    expectChosen("First", "2", {"two"});
    index->addOrUpdateCollection("1", "First");  // two of one name
    events.post(events::CollectionDataChanged{"First"});
    expectChosen("First", "2", {"two"});
    storeUserCollection("2", "Hockey", {makeTag("three", "Three")});
    events.post(events::CollectionDataChanged{"Hockey"});
    expectChosen("Hockey", "2", {"three"});
    library->deleteUserCollection({"1", "First"});
    expectChosen("Hockey", "2", {"three"});

    // The program is killed before anything is notified of the rename.
    index->addOrUpdateCollection("2", "Killed");
    start();
    expectChosen("Killed", "2", {"three"});

    // Renamed and deleted while it is read.
    library->selectStandardCollection("Hockey");
    events.post(events::CollectionDataChanged{});
    library->selectUserCollection("2");
    index->addOrUpdateCollection("2", "Mine");
    expectChosen("Mine", "2", {"three"});
    library->selectStandardCollection("Football");
    events.post(events::CollectionDataChanged{});
    library->selectUserCollection("2");
    library->deleteUserCollection({"2", "Mine"});
    scheduler.run();
    EXPECT_EQ(activeTags(), Ids{"goal"});
}

TEST_F(Library, ACollectionThatCannotBeReadForNowRemainsTheChosenOne) {
    storeUserCollection("1", "Mine", {makeTag("own", "Own")});
    start();
    scheduler.run();
    library->selectUserCollection("1");
    const auto value = *defaults.data(layout::collectionKey("1"));
    defaults.remove(layout::collectionKey("1"));
    start();
    EXPECT_EQ(*library->selectedStandardCollectionName, "Hockey");
    defaults.setData(layout::collectionKey("1"), value);
    start();
    EXPECT_EQ(activeTags(), Ids{"own"});
}

TEST_F(Library, ASaveDuringALoadReachesTheMergedLists) {
    storeUserCollection("active", "Mine", {makeTag("known", "Known")});
    storeUserCollection("other", "Other", {});
    start();
    scheduler.run();
    library->selectUserCollection("active");
    scheduler.run();
    events.post(events::CollectionDataChanged{});
    ASSERT_TRUE(library->isLoadingCollections());
    scheduler.step();  // the load has read the collections, but not delivered its result
    storeUserCollection("active", "Mine", {makeTag("known", "Known"), makeTag("new", "New")});
    storeUserCollection("other", "Other", {makeTag("elsewhere", "Elsewhere")});
    events.post(events::CollectionDataChanged{"Mine"});
    scheduler.run();
    EXPECT_TRUE(library->tagById("new"));
    EXPECT_TRUE(library->tagById("elsewhere"));
    EXPECT_FALSE(library->isLoadingCollections());
}

TEST_F(Library, ATagUpdateReloadsAndOneWithoutATagDoesNothing) {
    storeUserCollection("1", "Mine", {makeTag("own", "Own")});
    start();
    scheduler.run();
    storeUserCollection("1", "Mine", {makeTag("own", "Renamed")});
    events.post(events::TagUpdated{});
    EXPECT_EQ(scheduler.pendingTasks(), 0u);
    events.post(events::TagUpdated{"own", "Renamed"});
    EXPECT_NE(library->tagById("own"), nullptr) << "the timeline store looks the tag up next";
    scheduler.run();
    EXPECT_EQ(library->tagById("own")->name, "Renamed");
}

TEST_F(Library, DeletingTheActiveCollectionFallsBackAndLeavesNothing) {
    const auto id = saveCollection("Mine", {"Own"});
    start();
    scheduler.run();
    library->selectUserCollection(id);
    const auto changed = record<events::CollectionDataChanged>();
    library->deleteUserCollection({id, "Mine"});
    EXPECT_EQ(changed->size(), 1u);
    EXPECT_EQ(*library->currentCollectionType, TagCollection::standard());
    EXPECT_EQ(registry.collection, TagCollection::standard());
    scheduler.advance(60);
    EXPECT_TRUE(library->userCollections().empty());
    EXPECT_FALSE(defaults.data(layout::collectionKey(id)).has_value());
    EXPECT_FALSE(library->collectionData("Mine").has_value());
    EXPECT_FALSE(std::filesystem::exists(storage->collectionsFolder() / id));
    EXPECT_EQ(library->tagById("Own"), nullptr);

    const auto last = saveCollection("Mine", {"Own"});
    folder.write("resources/names.json", "damaged");
    start();
    library->selectUserCollection(last);
    scheduler.run();
    library->deleteUserCollection({last, "Mine"});
    EXPECT_TRUE(activeTags().empty() && registry.tags.empty());
    EXPECT_FALSE(library->selectedStandardCollectionName->has_value());
}

// The user acts during a load; the log determines at which point.
TEST_F(Library, ALoadUndoesNothingThatHappensMeanwhile) {
    struct Meanwhile final : Log {
        void line(std::string_view text) override {
            for (auto& [at, act] : acts)
                if (text.starts_with(at) && act)
                    std::exchange(act, nullptr)();
        }
        std::map<std::string, std::function<void()>> acts;
    } meanwhile;
    storeUserCollection("1", "Gone", {makeTag("gone", "Gone")});
    storeUserCollection("2", "Mine", {makeTag("old", "Old")});
    scheduler.advance(60);
    defaults.remove(layout::collectionKey("1"));
    CollectionServices watched{*storage, *index, bookmarks, scheduler, events, texts, meanwhile};
    library = std::make_unique<TagLibraryManager>(watched, folder.path() / "resources", locale);
    library->start();
    meanwhile.acts["📚 TagLibraryManager: Loading collection 'Gone'"] = [&] {
        library->deleteUserCollection({"1", "Gone"});
    };
    meanwhile.acts["✅ TagLibraryManager: Successfully loaded collection 'Mine'"] = [&] {
        storeUserCollection("2", "Mine", {makeTag("new", "New")});
        events.post(events::CollectionDataChanged{"Mine"});
    };
    scheduler.advance(60);
    EXPECT_FALSE(defaults.data(layout::collectionKey("1")).has_value());
    EXPECT_FALSE(std::filesystem::exists(storage->collectionsFolder() / "1"));
    EXPECT_EQ(library->tagById("gone"), nullptr);
    library->selectUserCollection("2");
    EXPECT_EQ(activeTags(), Ids{"new"});
    library.reset();  // destroyed before its services
}

TEST_F(Library, LabelsAreOfferedThroughTheTagsGroupsInTheOrderOfAllLabels) {
    CollectionData data;
    data.id = "1";
    data.labels = {{"c", "C", ""}, {"a", "A", ""}, {"b", "B", ""}};
    data.labelGroups = {
        {"g1", "One", {"a", "missing"}}, {"g2", "Two", {"c", "a"}}, {"g3", "Three", {"b"}}};
    storage->saveCollection(data);
    index->addOrUpdateCollection("1", "Mine");
    start();
    scheduler.run();
    auto tag = makeTag("t", "T");
    tag.lablesGroup = {"g2", "g1", "dangling"};
    std::string names;
    for (const auto& label : library->labelsForTag(tag))
        names += label.name;
    EXPECT_EQ(names, "CA");
    EXPECT_EQ(library->labelGroupContaining("a")->id, "g1");
    EXPECT_EQ(library->labelGroupContaining("none"), nullptr);
    EXPECT_EQ(library->labelById("b")->name, "B");
}

TEST_F(Library, ALoadThatOutlivesTheLibraryIsDropped) {
    start();
    library.reset();
    scheduler.run();
    EXPECT_FALSE(log.contains("Finished loading"));
}

TEST_F(Library, AnotherLanguageReplacesTheChosenCollectionByItsCounterpart) {
    folder.write("resources/names.json",
                 R"({"collections": [{"language": "en", "names": ["Hockey", "Football"]},
                                     {"language": "ru", "names": ["Хоккей", "Футбол"]}]})");
    writeTags("Хоккей", {"shot", "save"});
    writeTags("Футбол", {"goal"});
    start();
    library->selectStandardCollection("Football");
    library->toggleTimeEvent("attack");
    locale.language = "ru";
    library->followLanguage();
    EXPECT_EQ(*library->selectedStandardCollectionName, "Футбол");
    EXPECT_TRUE(library->selectedTimeEvents->contains("attack"));
    ASSERT_EQ(registry.tags.size(), 1u);
    start();
    EXPECT_EQ(*library->selectedStandardCollectionName, "Футбол");
}

}  // namespace
}  // namespace tembrix
