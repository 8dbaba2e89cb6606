#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/records/annotation_records.h"

namespace tembrix {

// A collection that is part of the program.
struct StandardCollection {
    std::string name;
    CollectionLists lists;
    bool operator==(const StandardCollection&) const = default;
};

struct LanguageCollection {
    std::string language;
    std::vector<std::string> names;
};
struct LanguageCollectionsData {
    std::vector<LanguageCollection> collections;
};

// The language of the standard collections for a localization: "ru" for Russian and Uzbek, else
// "en".
std::string collectionLanguage(const std::string& localization);

// Reads names.json and five files per collection from a resource folder. Without a readable
// names.json there are no collections; without one of the other files, its list is empty.
std::vector<StandardCollection> loadStandardCollections(const std::filesystem::path& folder,
                                                        const std::string& localization);

}  // namespace tembrix
