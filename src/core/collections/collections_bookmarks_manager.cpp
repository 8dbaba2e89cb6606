#include "core/collections/collections_bookmarks_manager.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "base/bytes.h"
#include "base/files.h"
#include "base/json_style.h"

#include "ports/user_defaults.h"

#include "core/collections/collection_index_list.h"
#include "core/collections/duplicate_collections.h"
#include "core/notifications/events.h"
#include "core/records/codec.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

constexpr std::string_view done = "true";

std::string quoted(const CollectionInfo& info) {
    return "'" + info.name + "' (id: " + info.id + ")";
}

}  // namespace

CollectionsBookmarksManager::CollectionsBookmarksManager(InMemoryStorageManager& storage,
                                                         Bookmarks& bookmarks, Keychain& keychain,
                                                         Scheduler& scheduler, EventBus& events,
                                                         Log& log)
    : storage_(storage),
      bookmarks_(bookmarks),
      keychain_(keychain),
      scheduler_(scheduler),
      events_(events),
      log_(log),
      index_(std::make_shared<CollectionIndexList>(
          storage.dataFolder() / layout::collectionIndexFile, storage.userDefaults(), log)) {
    // If the folder cannot be created, writing the index reports it.
    static_cast<void>(makeFolder(storage_.dataFolder()));
    if (index_->hasUnsavedChange())
        changed();
}

CollectionsBookmarksManager::~CollectionsBookmarksManager() = default;

std::filesystem::path CollectionsBookmarksManager::indexFile() const {
    return index_->file();
}

std::vector<CollectionInfo> CollectionsBookmarksManager::collections() {
    return index_->list();
}

std::optional<std::vector<CollectionInfo>> CollectionsBookmarksManager::secondCopy() const {
    return index_->secondCopy();
}

void CollectionsBookmarksManager::addOrUpdateCollection(const std::string& id,
                                                        const std::string& name) {
    index_->change([&](std::vector<CollectionInfo>& list) {
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const CollectionInfo& info) { return info.id == id; });
        if (found != list.end())
            found->name = name;
        else
            list.push_back({id, name});
        return true;
    });
    changed();
}

void CollectionsBookmarksManager::replaceId(const std::string& id, const std::string& right) {
    const bool found = index_->change([&](std::vector<CollectionInfo>& list) {
        bool replaced = false;
        for (auto& info : list)
            if (info.id == id) {
                info.id = right;
                replaced = true;
            }
        return replaced;
    });
    if (found)
        changed();
}

void CollectionsBookmarksManager::removeCollection(const std::string& id) {
    const bool removed = index_->change([&](std::vector<CollectionInfo>& list) {
        return std::erase_if(list, [&](const CollectionInfo& info) { return info.id == id; }) > 0;
    });
    if (!removed) {
        log_.line("⚠️ CollectionsBookmarks: Collection " + id + " not found in cache");
        return;
    }
    log_.line("✅ CollectionsBookmarks: Removed collection " + id + " from cache");
    changed();
}

void CollectionsBookmarksManager::setWrittenNotice(std::function<void()> notice) {
    index_->setWrittenNotice(std::move(notice));
}

void CollectionsBookmarksManager::dropUnsavedChange() {
    pendingSave_ = false;
    index_->dropUnsavedChange();
}

void CollectionsBookmarksManager::rewriteIndex() {
    index_->markUnsaved();
    changed();
}

// The change is marked as pending at once, so that it is saved even if the program ends now. The
// timer is started on the main thread.
void CollectionsBookmarksManager::changed() {
    if (pendingSave_.exchange(true))
        return;
    if (scheduler_.isMain())
        armTimer();
    else
        scheduler_.onMain(lifetime_.guard([this] {
            if (pendingSave_)
                armTimer();
        }));
}

void CollectionsBookmarksManager::armTimer() {
    saveTimer_ = scheduler_.after(saveDelay, [this] {
        if (pendingSave_.exchange(false))
            startWrite();
    });
}

void CollectionsBookmarksManager::applicationWillTerminate() {
    saveTimer_.reset();
    if (pendingSave_.exchange(false))
        startWrite();
}

void CollectionsBookmarksManager::flushNow() {
    pendingSave_ = false;
    index_->write();
}

Result<void> CollectionsBookmarksManager::replaceIndexFile(
    const std::function<Result<void>()>& replace) {
    const auto replaced = index_->replaceFile(replace);
    if (replaced)
        pendingSave_ = false;
    return replaced;
}

void CollectionsBookmarksManager::startWrite() {
    scheduler_.background(Priority::utility, [index = index_] { index->write(); });
}

std::vector<CollectionBookmark> CollectionsBookmarksManager::loadBookmarks() {
    const std::string subject = "CollectionsBookmarksManager: ";
    const auto list = collections();
    log_.line("📚 " + subject + "Loading " + std::to_string(list.size()) +
              " collections from CollectionsBookmarks.json");
    std::vector<CollectionBookmark> result;
    for (const auto& info : list) {
        log_.line("📚 " + subject + "Processing collection " + quoted(info));
        if (auto bookmark = makeBookmark(info)) {
            log_.line("✅ " + subject + "Successfully created bookmark for '" + info.name + "'");
            result.push_back(std::move(*bookmark));
        } else {
            log_.line("❌ " + subject + "Failed to create bookmark for '" + info.name + "'");
        }
    }
    log_.line("📚 " + subject + "Loaded " + std::to_string(result.size()) + " collection bookmarks");
    return result;
}

std::optional<CollectionBookmark> CollectionsBookmarksManager::makeBookmark(
    const CollectionInfo& info) const {
    const std::string warning = "⚠️ CollectionsBookmarks: ";
    const auto folder = storage_.collectionsFolder() / pathFromText(info.id);
    std::error_code ignored;
    if (!std::filesystem::exists(folder, ignored)) {
        log_.line(warning + "Collection folder not found for " + info.name + " (id: " + info.id +
                  ")");
        return std::nullopt;
    }
    CollectionBookmark result;
    result.id = info.id;
    result.name = info.name;
    const std::array<std::pair<const char*, Bytes*>, 4> required{{
        {layout::tagGroupsFile, &result.tagGroupsBookmark},
        {layout::tagsFile, &result.tagsBookmark},
        {layout::labelGroupsFile, &result.labelGroupsBookmark},
        {layout::labelsFile, &result.labelsBookmark},
    }};
    for (const auto& [file, target] : required)
        if (!std::filesystem::exists(folder / file, ignored)) {
            log_.line(warning + "Required files missing for " + info.name);
            return std::nullopt;
        }
    bool failed = false;
    const auto make = [&](const char* file) {
        auto bookmark = bookmarks_.make(folder / file);
        failed = failed || !bookmark;
        return bookmark.value_or(Bytes{});
    };
    for (const auto& [file, target] : required)
        *target = make(file);
    if (std::filesystem::exists(folder / layout::timeEventsFile, ignored))
        result.timeEventsBookmark = make(layout::timeEventsFile);
    if (std::filesystem::exists(folder / layout::playFieldFile, ignored))
        result.playFieldBookmark = make(layout::playFieldFile);
    if (failed) {
        log_.line(warning + "Failed to create bookmarks for " + info.name);
        return std::nullopt;
    }
    return result;
}

void CollectionsBookmarksManager::migrateSavedCollections() {
    auto& defaults = storage_.userDefaults();
    if (defaults.boolean(layout::collectionsLoadedKey))
        return;
    defaults.setBoolean(layout::collectionsLoadedKey, true);
    if (!collections().empty())
        return;
    const auto saved = defaults.data(layout::savedCollectionsKey);
    if (!saved)
        return;
    const auto list = decode<std::vector<CollectionBookmark>>(*saved);
    if (!list)
        return;
    for (const auto& collection : *list)
        addOrUpdateCollection(collection.id, collection.name);
    log_.line("✅ CollectionsBookmarks: Migrated " + std::to_string(list->size()) +
              " collections from UserDefaults");
}

// One row per group of folders, followed by collections saved recently, whose folders are created
// by the next flush.
std::vector<CollectionInfo> CollectionsBookmarksManager::cleanedList(
    const std::vector<CollectionInfo>& before,
    const std::map<std::string, std::vector<CollectionFolder>>& groups) const {
    std::map<std::string, std::string> names;
    for (const auto& info : before)
        names.insert_or_assign(info.id, info.name);
    std::vector<CollectionInfo> list;
    std::set<std::string> gone;  // folders that were renamed or removed by the clean-up
    for (const auto& [base, copies] : groups) {
        const auto name = names.find(base);
        list.push_back({base, name == names.end() ? base : name->second});
        for (const auto& copy : copies)
            if (copy.name != base)
                gone.insert(copy.name);
    }
    for (const auto& info : before)
        if (!groups.contains(info.id) && !gone.contains(info.id) &&
            storage_.userDefaults().data(layout::collectionKey(info.id)))
            list.push_back(info);
    return list;
}

void CollectionsBookmarksManager::cleanUpDuplicateCollections() {
    const std::string success = "✅ CollectionsBookmarks: ";
    const auto markDone = [&] { keychain_.set(toBytes(done), layout::collectionsDeduplicatedKey); };
    if (const auto flag = keychain_.get(layout::collectionsDeduplicatedKey);
        flag && asText(*flag) == done) {
        log_.line(success + "Deduplication already done (from Keychain), skipping");
        return;
    }
    if (storage_.userDefaults().boolean(layout::collectionsDeduplicatedKey)) {
        markDone();
        storage_.userDefaults().remove(layout::collectionsDeduplicatedKey);
        log_.line(success + "Migrated deduplication flag from UserDefaults to Keychain");
        return;
    }
    const auto parent = storage_.collectionsFolder();
    std::error_code ignored;
    if (!std::filesystem::exists(parent, ignored)) {
        markDone();
        return;
    }
    const auto folders = listCollectionFolders(parent);
    if (!folders) {
        markDone();
        log_.line("❌ CollectionsBookmarks: Error cleaning up duplicates - " + folders.error().text);
        return;
    }
    const auto groups = groupDuplicates(*folders);
    keepOneWorkingCopyPerGroup(storage_.userDefaults(), groups, log_);
    keepOnePerGroup(parent, groups, log_);

    std::size_t count = 0;
    // The list in memory is changed as well; otherwise the next change would write the old ids
    // back.
    index_->changeAndWrite([&](std::vector<CollectionInfo>& list) {
        list = cleanedList(list, groups);
        count = list.size();
    });
    markDone();
    log_.line(success + "Updated CollectionsBookmarks.json with " + std::to_string(count) +
              " collections");
    log_.line(success + "Deduplication completed and marked as done");
    scheduler_.onMain([&events = events_] { events.post(events::CollectionDataChanged{}); });
}

}  // namespace tembrix
