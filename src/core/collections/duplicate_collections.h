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

// A folder of the collections folder as the clean-up of duplicates looks at it.
struct CollectionFolder {
    std::string name;
    Date created;  // the distant past if it cannot be told
    bool operator==(const CollectionFolder&) const = default;
};

// "Hockey" of "Hockey (2)"; any other name without the white space around it.
std::string baseCollectionName(const std::string& folder);

// The folders by base name, in each group the one to keep first: the newest, and of equally old
// ones the one with the highest number.
std::map<std::string, std::vector<CollectionFolder>> groupDuplicates(
    const std::vector<CollectionFolder>& folders);

// The folders in `parent`, hidden ones left out.
Result<std::vector<CollectionFolder>> listCollectionFolders(const std::filesystem::path& parent);

// The same for the working copies: the kept folder's goes under the base name, the others go, or
// the next flush would bring their folders back and write their data over the kept one.
void keepOneWorkingCopyPerGroup(UserDefaults& defaults,
                                const std::map<std::string, std::vector<CollectionFolder>>& groups,
                                Log& log);

// Leaves one folder per group, under its base name. What cannot be removed or moved stays.
void keepOnePerGroup(const std::filesystem::path& parent,
                     const std::map<std::string, std::vector<CollectionFolder>>& groups, Log& log);

}  // namespace tembrix
