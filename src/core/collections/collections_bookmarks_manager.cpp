#include "core/collections/collections_bookmarks_manager.h"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "base/bytes.h"
#include "base/files.h"
#include "base/json_style.h"

#include "ports/user_defaults.h"

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

struct CollectionsBookmarksManager::Index {
    Index(std::filesystem::path path, UserDefaults& values, Log& lines)
        : file(std::move(path)), defaults(values), log(lines) {
        const auto unsaved = defaults.data(layout::collectionsUnsavedKey);
        auto list = unsaved ? decode<std::vector<CollectionInfo>>(*unsaved).optional()
                            : std::optional<std::vector<CollectionInfo>>();
        if (!list)
            return;
        cache = std::move(*list);
        ahead = true;
    }

    const std::filesystem::path file;
    UserDefaults& defaults;
    Log& log;
    std::mutex cacheLock;
    std::vector<CollectionInfo> cache;
    // The cache holds a change that the file lacks. Until it is written, an empty cache means that
    // the last collection was removed, not that the file is still to be read.
    bool ahead = false;
    std::mutex writeLock;  // a later write never comes before an earlier one

    bool isLoaded() const { return ahead || !cache.empty(); }

    std::vector<CollectionInfo> read() const {
        std::error_code ignored;
        if (!std::filesystem::exists(file, ignored))
            return {};
        const auto bytes = readFile(file);
        auto list = bytes ? decode<std::vector<CollectionInfo>>(*bytes)
                          : Result<std::vector<CollectionInfo>>(bytes.error());
        if (list)
            return std::move(list).value();
        log.line("❌ CollectionsBookmarks: Error loading collections - " + list.error().text);
        return {};
    }

    // These three under the cache lock.
    void loadIfEmpty() {
        if (!isLoaded())
            cache = read();
    }
    void setAhead() {
        ahead = true;
        if (const auto json = encode(cache))
            defaults.setData(layout::collectionsUnsavedKey, *json);
    }
    void setWritten() {
        ahead = false;
        defaults.remove(layout::collectionsUnsavedKey);
    }

    bool write(const std::vector<CollectionInfo>& list) const {
        const auto json = encode(list, JsonStyle::pretty);
        const auto written = json ? replaceFile(file, *json) : Result<void>(json.error());
        if (!written)
            log.line("❌ CollectionsBookmarks: Error saving collections - " + written.error().text);
        return written.ok();
    }

    void writeCache() {
        const std::lock_guard writing(writeLock);
        std::vector<CollectionInfo> list;
        {
            const std::lock_guard lock(cacheLock);
            if (!ahead)  // written already, or the file was replaced meanwhile
                return;
            list = cache;
        }
        if (!write(list))
            return;
        const std::lock_guard lock(cacheLock);
        if (cache == list)
            setWritten();
    }
};

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
      index_(std::make_shared<Index>(storage.dataFolder() / layout::collectionIndexFile,
                                     storage.userDefaults(), log)) {
    // A folder that cannot be made shows when the index is written.
    static_cast<void>(makeFolder(storage_.dataFolder()));
    if (index_->ahead)
        changed();
}

CollectionsBookmarksManager::~CollectionsBookmarksManager() = default;

std::filesystem::path CollectionsBookmarksManager::indexFile() const {
    return index_->file;
}

std::vector<CollectionInfo> CollectionsBookmarksManager::collections() {
    {
        const std::lock_guard lock(index_->cacheLock);
        if (index_->isLoaded())
            return index_->cache;
    }
    auto list = index_->read();
    const std::lock_guard lock(index_->cacheLock);
    if (!index_->ahead)  // a change that came while reading has loaded the list itself
        index_->cache = std::move(list);
    return index_->cache;
}

void CollectionsBookmarksManager::addOrUpdateCollection(const std::string& id,
                                                        const std::string& name) {
    {
        const std::lock_guard lock(index_->cacheLock);
        index_->loadIfEmpty();
        auto& cache = index_->cache;
        const auto found = std::find_if(cache.begin(), cache.end(),
                                        [&](const CollectionInfo& info) { return info.id == id; });
        if (found != cache.end())
            found->name = name;
        else
            cache.push_back({id, name});
        index_->setAhead();
    }
    changed();
}

void CollectionsBookmarksManager::removeCollection(const std::string& id) {
    {
        const std::lock_guard lock(index_->cacheLock);
        index_->loadIfEmpty();
        if (std::erase_if(index_->cache,
                          [&](const CollectionInfo& info) { return info.id == id; }) == 0) {
            log_.line("⚠️ CollectionsBookmarks: Collection " + id + " not found in cache");
            return;
        }
        index_->setAhead();
    }
    log_.line("✅ CollectionsBookmarks: Removed collection " + id + " from cache");
    changed();
}

// The change counts at once, so that a termination right after it saves; only the timer has to wait
// for the main thread.
void CollectionsBookmarksManager::changed() {
    if (pendingSave_.exchange(true))
        return;
    if (scheduler_.isMain())
        armTimer();
    else
        scheduler_.onMain([this, alive = std::weak_ptr(alive_)] {
            if (!alive.expired() && pendingSave_)
                armTimer();
        });
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
    index_->writeCache();
}

void CollectionsBookmarksManager::rereadIndex() {
    pendingSave_ = false;
    const std::lock_guard lock(index_->cacheLock);
    index_->cache.clear();
    index_->setWritten();
}

void CollectionsBookmarksManager::startWrite() {
    scheduler_.background(Priority::utility, [index = index_] { index->writeCache(); });
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

    std::vector<CollectionInfo> list;
    {
        const std::lock_guard writing(index_->writeLock);
        const std::lock_guard lock(index_->cacheLock);
        index_->loadIfEmpty();
        std::map<std::string, std::string> names;
        for (const auto& info : index_->cache)
            names.insert_or_assign(info.id, info.name);
        std::set<std::string> gone;  // folders that lost their name to the clean-up
        for (const auto& [base, copies] : groups) {
            const auto name = names.find(base);
            list.push_back({base, name == names.end() ? base : name->second});
            for (const auto& copy : copies)
                if (copy.name != base)
                    gone.insert(copy.name);
        }
        // A collection that was saved moments ago has its folder only after the next flush.
        for (const auto& info : index_->cache)
            if (!groups.contains(info.id) && !gone.contains(info.id) &&
                storage_.userDefaults().data(layout::collectionKey(info.id)))
                list.push_back(info);
        // The cached list follows, or the next change would write the old ids back.
        index_->cache = list;
        if (index_->write(list))
            index_->setWritten();
        else
            index_->setAhead();
    }
    markDone();
    log_.line(success + "Updated CollectionsBookmarks.json with " + std::to_string(list.size()) +
              " collections");
    log_.line(success + "Deduplication completed and marked as done");
    scheduler_.onMain([&events = events_] { events.post(events::CollectionDataChanged{}); });
}

}  // namespace tembrix
