#include "core/collections/standard_collections.h"

#include <algorithm>

#include "base/files.h"
#include "base/json.h"

#include "core/records/codec.h"

namespace tembrix {

template <>
struct JsonFields<LanguageCollection> {
    static constexpr auto fields =
        std::make_tuple(json::required("language", &LanguageCollection::language),
                        json::required("names", &LanguageCollection::names));
};
template <>
struct JsonFields<LanguageCollectionsData> {
    static constexpr auto fields =
        std::make_tuple(json::required("collections", &LanguageCollectionsData::collections));
};

namespace {

// Reads the record in one file; empty if the file is missing or damaged.
template <class Record>
Record readRecord(const std::filesystem::path& folder, const std::string& stem,
                  const std::string& name) {
    const auto bytes = readFile(folder / pathFromText(stem + "(" + name + ").json"));
    if (!bytes)
        return {};
    return decode<Record>(*bytes).optional().value_or(Record{});
}

const LanguageCollection* entryFor(const LanguageCollectionsData& data,
                                   const std::string& language) {
    const auto found =
        std::find_if(data.collections.begin(), data.collections.end(),
                     [&](const LanguageCollection& entry) { return entry.language == language; });
    return found == data.collections.end() ? nullptr : &*found;
}

}  // namespace

std::string collectionLanguage(const std::string& localization) {
    return localization.starts_with("ru") || localization.starts_with("uz") ? "ru" : "en";
}

std::vector<StandardCollection> loadStandardCollections(const std::filesystem::path& folder,
                                                        const std::string& localization) {
    const auto bytes = readFile(folder / "names.json");
    if (!bytes)
        return {};
    const auto names = decodeJson<LanguageCollectionsData>(*bytes);
    if (!names)
        return {};
    const auto* entry = entryFor(*names, collectionLanguage(localization));
    if (!entry)
        entry = entryFor(*names, "en");
    if (!entry)
        return {};

    std::vector<StandardCollection> collections;
    for (const auto& name : entry->names)
        collections.push_back(
            {name,
             {readRecord<TagsData>(folder, "tags", name).tags,
              readRecord<TagGroupsData>(folder, "tagsGroups", name).tagGroups,
              readRecord<LabelGroupsData>(folder, "labelsGroups", name).labelGroups,
              readRecord<LabelsData>(folder, "labels", name).labels,
              readRecord<TimeEventsData>(folder, "timeEvents", name).events}});
    return collections;
}

}  // namespace tembrix
