#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "base/date.h"
#include "base/log.h"
#include "base/result.h"

#include "ports/user_defaults.h"

namespace tembrix {

// A folder of the collections folder, for the clean-up of duplicates.
struct CollectionFolder {
    std::string name;
    Date created;  // the distant past if unknown
    bool operator==(const CollectionFolder&) const = default;
};

// "Hockey" for "Hockey (2)"; other names are returned without surrounding white space.
std::string baseCollectionName(const std::string& folder);

// The folders by base name. In each group the folder to keep is first: the newest or, if several
// are equally old, the one with the highest number.
std::map<std::string, std::vector<CollectionFolder>> groupDuplicates(
    const std::vector<CollectionFolder>& folders);

// The folders in `parent`, except hidden ones.
Result<std::vector<CollectionFolder>> listCollectionFolders(const std::filesystem::path& parent);

// Does the same for the working copies: the kept folder's is stored under the base name, the others
// are removed. Otherwise the next flush would restore their folders and overwrite the kept one.
void keepOneWorkingCopyPerGroup(UserDefaults& defaults,
                                const std::map<std::string, std::vector<CollectionFolder>>& groups,
                                Log& log);

// Leaves one folder per group, under its base name. Folders that cannot be removed or renamed are
// kept.
void keepOnePerGroup(const std::filesystem::path& parent,
                     const std::map<std::string, std::vector<CollectionFolder>>& groups, Log& log);

}  // namespace tembrix
