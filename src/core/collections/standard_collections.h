#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/records/annotation_records.h"

namespace tembrix {

// A collection that ships with the program.
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

// The language of the standard collections for a localisation: "ru" for Russian and Uzbek, else
// "en".
std::string collectionLanguage(const std::string& localization);

// Reads names.json and the five files per collection from a resource folder. A missing or broken
// names.json gives none; a missing or broken file gives an empty list for that kind.
std::vector<StandardCollection> loadStandardCollections(const std::filesystem::path& folder,
                                                        const std::string& localization);

}  // namespace tembrix
