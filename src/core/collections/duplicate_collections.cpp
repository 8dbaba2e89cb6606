#include "core/collections/duplicate_collections.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/files.h"
#include "base/utf8_text.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "core/storage/set_aside.h"

namespace tembrix {

namespace {

namespace fs = std::filesystem;

struct Numbered {
    std::string_view before;
    double number;
};

// Splits "name (12)". The number must be at the end and in parentheses.
std::optional<Numbered> trailingNumber(std::string_view name) {
    if (!name.ends_with(')'))
        return std::nullopt;
    const auto open = name.rfind('(');
    const auto digits =
        open == name.npos ? std::string_view{} : name.substr(open + 1, name.size() - open - 2);
    if (digits.empty() || digits.find_first_not_of("0123456789") != digits.npos)
        return std::nullopt;
    return Numbered{name.substr(0, open), std::strtod(std::string(digits).c_str(), nullptr)};
}

double copyNumber(const std::string& name) {
    const auto numbered = trailingNumber(name);
    return numbered ? numbered->number : -1;
}

// If the working copy cannot be read, the copy in the folder is used.
void moveWorkingCopy(UserDefaults& defaults, const std::string& from, const std::string& to,
                     Log& log) {
    const auto value = defaults.data(layout::collectionKey(from));
    auto collection = value ? decode<CollectionData>(*value).optional() : std::nullopt;
    if (value && !collection)
        setAside(defaults, log, layout::collectionKey(from), *value);
    if (collection)
        collection->id = to;
    const auto moved = collection ? encode(*collection).optional() : std::nullopt;
    if (moved)
        defaults.setData(layout::collectionKey(to), *moved);
    else
        defaults.remove(layout::collectionKey(to));
    defaults.remove(layout::collectionKey(from));
}

void renameFolder(const fs::path& parent, const std::string& from, const std::string& to,
                  std::string_view what, Log& log) {
    std::error_code ignored;
    fs::remove_all(parent / pathFromText(to), ignored);
    fs::rename(parent / pathFromText(from), parent / pathFromText(to), ignored);
    log.line("📝 CollectionsBookmarks: Renamed " + std::string(what) + ": " + from + " -> " + to);
}

}  // namespace

std::string baseCollectionName(const std::string& folder) {
    if (const auto numbered = trailingNumber(folder)) {
        auto base = trimmed(numbered->before);
        if (!base.empty())
            return base;
    }
    return trimmed(folder);
}

std::map<std::string, std::vector<CollectionFolder>> groupDuplicates(
    const std::vector<CollectionFolder>& folders) {
    std::map<std::string, std::vector<CollectionFolder>> groups;
    for (const auto& folder : folders)
        groups[baseCollectionName(folder.name)].push_back(folder);
    for (auto& [base, copies] : groups)
        std::stable_sort(copies.begin(), copies.end(), [](const auto& a, const auto& b) {
            return a.created != b.created ? a.created > b.created
                                          : copyNumber(a.name) > copyNumber(b.name);
        });
    return groups;
}

Result<std::vector<CollectionFolder>> listCollectionFolders(const fs::path& parent) {
    std::error_code error;
    std::vector<CollectionFolder> folders;
    constexpr Date distantPast{std::numeric_limits<double>::lowest()};
    for (auto entry = fs::directory_iterator(parent, error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        const auto name = pathText(entry->path().filename());
        if (!name.starts_with('.') && entry->is_directory(ignored))
            folders.push_back({name, creationDate(entry->path()).value_or(distantPast)});
    }
    if (error)
        return Error{"file", error.value(), pathText(parent) + ": " + error.message()};
    return folders;
}

void keepOneWorkingCopyPerGroup(UserDefaults& defaults,
                                const std::map<std::string, std::vector<CollectionFolder>>& groups,
                                Log& log) {
    for (const auto& [base, copies] : groups) {
        for (std::size_t i = 1; i < copies.size(); ++i)
            defaults.remove(layout::collectionKey(copies[i].name));
        if (copies.front().name != base)
            moveWorkingCopy(defaults, copies.front().name, base, log);
    }
}

void keepOnePerGroup(const fs::path& parent,
                     const std::map<std::string, std::vector<CollectionFolder>>& groups, Log& log) {
    for (const auto& [base, copies] : groups) {
        const auto& kept = copies.front().name;
        for (std::size_t i = 1; i < copies.size(); ++i) {
            std::error_code ignored;
            fs::remove_all(parent / pathFromText(copies[i].name), ignored);
            log.line("🗑️ CollectionsBookmarks: Removed duplicate collection folder: " +
                     copies[i].name);
        }
        if (kept != base)
            renameFolder(parent, kept, base,
                         copies.size() == 1 ? "single collection folder" : "collection folder",
                         log);
    }
}

}  // namespace tembrix
