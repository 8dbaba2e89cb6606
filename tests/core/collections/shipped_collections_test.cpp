#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>

#include "base/color.h"
#include "base/utf8_text.h"

#include "core/collections/standard_collections.h"
#include "core/keyboard/hot_key_codes.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

const std::filesystem::path shipped = TEMBRIX_RESOURCES "/collections";

template <class Record>
std::vector<std::string> ids(const std::vector<Record>& records) {
    std::vector<std::string> result;
    for (const auto& record : records)
        result.push_back(record.id);
    return result;
}

template <class Record>
std::set<std::string> uniqueIds(const std::vector<Record>& records) {
    const auto all = ids(records);
    std::set<std::string> unique(all.begin(), all.end());
    EXPECT_EQ(unique.size(), all.size()) << "an id occurs twice";
    return unique;
}

// Checks that a hot key can be found: a key of the tables, alone or with Shift, not used for
// playback.
void expectWorkingHotkey(const std::string& hotkey) {
    static const std::regex working("(shift\\+)?[a-z0-9,.;'/-]");
    EXPECT_TRUE(std::regex_match(hotkey, working)) << hotkey;
    EXPECT_EQ(canonicalHotkey(hotkey), hotkey);
}

void expectSound(const StandardCollection& collection) {
    SCOPED_TRACE(collection.name);
    const auto& lists = collection.lists;
    const auto tags = uniqueIds(lists.tags);
    const auto labels = uniqueIds(lists.labels);
    const auto groups = uniqueIds(lists.labelGroups);
    uniqueIds(lists.tagGroups);
    uniqueIds(lists.timeEvents);
    EXPECT_GE(lists.tags.size(), 25u);
    EXPECT_GE(lists.timeEvents.size(), 4u);

    std::set<std::string> grouped, offered, hotkeys, colors;
    for (const auto& group : lists.tagGroups)
        for (const auto& id : group.tags) {
            EXPECT_TRUE(tags.contains(id)) << id;
            EXPECT_TRUE(grouped.insert(id).second) << id;
        }
    EXPECT_EQ(grouped, tags) << "a tag that no group shows";
    std::map<std::string, std::set<std::string>> labelsOf;
    for (const auto& group : lists.labelGroups)
        for (const auto& id : group.lables) {
            EXPECT_TRUE(labels.contains(id)) << id;
            labelsOf[group.id].insert(id);
        }
    bool interval = false;
    for (const auto& tag : lists.tags) {
        SCOPED_TRACE(tag.id);
        EXPECT_EQ(hexText(parseHexColor(tag.color)), tag.color);
        EXPECT_TRUE(colors.insert(tag.color).second);
        EXPECT_GT(tag.defaultTimeBefore + tag.defaultTimeAfter, 0.5);
        interval = interval || tag.isInterval == true;
        if (tag.hotkey) {
            expectWorkingHotkey(*tag.hotkey);
            EXPECT_TRUE(hotkeys.insert(*tag.hotkey).second) << *tag.hotkey;
        }
        std::set<std::string> reachable, labelKeys;
        for (const auto& id : tag.lablesGroup) {
            EXPECT_TRUE(groups.contains(id)) << id;
            offered.insert(id);
            reachable.insert(labelsOf[id].begin(), labelsOf[id].end());
        }
        const auto keys = tag.labelHotkeys.value_or(std::map<std::string, std::string>{});
        for (const auto& [label, hotkey] : keys) {
            EXPECT_TRUE(reachable.contains(label)) << label;
            expectWorkingHotkey(hotkey);
            EXPECT_TRUE(labelKeys.insert(hotkey).second) << hotkey;
        }
    }
    EXPECT_TRUE(interval);
    EXPECT_EQ(offered, groups) << "a label group that no tag offers";
}

// The collection without names and descriptions.
StandardCollection withoutNames(StandardCollection collection) {
    collection.name.clear();
    auto& lists = collection.lists;
    const auto strip = [](auto& records) {
        for (auto& record : records) {
            EXPECT_FALSE(trimmed(record.name).empty()) << record.id;
            record.name.clear();
        }
    };
    strip(lists.tags);
    strip(lists.tagGroups);
    strip(lists.labelGroups);
    strip(lists.labels);
    strip(lists.timeEvents);
    for (auto& tag : lists.tags) {
        tag.description.clear();
        tag.collection.reset();
    }
    for (auto& label : lists.labels)
        label.description.clear();
    return collection;
}

TEST(ShippedCollections, AreSoundAndTheSameInBothLanguages) {
    const auto english = loadStandardCollections(shipped, "en");
    const auto russian = loadStandardCollections(shipped, "ru");
    ASSERT_GE(english.size(), 2u);
    ASSERT_EQ(english.size(), russian.size());
    std::set<std::string> allTags;
    std::size_t count = 0;
    for (std::size_t i = 0; i < english.size(); ++i) {
        expectSound(english[i]);
        EXPECT_NE(english[i].name, russian[i].name);
        EXPECT_EQ(withoutNames(english[i]), withoutNames(russian[i]));
        for (const auto& id : ids(english[i].lists.tags))
            allTags.insert(id);
        count += english[i].lists.tags.size();
    }
    EXPECT_EQ(allTags.size(), count) << "collections share a tag id";
}

TEST(StandardCollectionFiles, LanguageChoosesAndBrokenFilesAreEmpty) {
    EXPECT_EQ(collectionLanguage("uz-Latn"), "ru");
    EXPECT_EQ(collectionLanguage("fr_FR"), "en");
    EXPECT_EQ(collectionLanguage("ru_RU"), "ru");

    TempFolder folder;
    EXPECT_TRUE(loadStandardCollections(folder.path(), "en").empty());
    folder.write("names.json", "{\"collections\": 3}");
    EXPECT_TRUE(loadStandardCollections(folder.path(), "en").empty());
    folder.write("names.json", R"({"collections": [{"language": "de", "names": ["Hockey"]}]})");
    EXPECT_TRUE(loadStandardCollections(folder.path(), "fr").empty());
    folder.write("names.json", R"({"collections": [{"language": "en", "names": ["Hockey"]}]})");
    folder.write("timeEvents(Hockey).json", R"({"events": [{"id": "e", "name": "Period"}]})");
    folder.write("labels(Hockey).json", "broken");
    const auto found = loadStandardCollections(folder.path(), "ru");
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].lists.timeEvents.size(), 1u);
    EXPECT_TRUE(found[0].lists.labels.empty() && found[0].lists.tags.empty());
}

}  // namespace
}  // namespace tembrix
