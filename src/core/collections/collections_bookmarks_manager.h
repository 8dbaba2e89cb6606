#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/result.h"

#include "ports/bookmarks.h"
#include "ports/keychain.h"
#include "ports/scheduler.h"

#include "core/background/lifetime.h"
#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/storage/collection_index_storage.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

class CollectionIndexList;
struct CollectionFolder;

// The index of the user's collections with their ids and display names. Stored in a small file;
// changes in quick succession are saved together. Thread-safe.
class CollectionsBookmarksManager final : public CollectionIndexStorage {
  public:
    static constexpr double saveDelay = 2.0;

    CollectionsBookmarksManager(InMemoryStorageManager& storage, Bookmarks& bookmarks,
                                Keychain& keychain, Scheduler& scheduler, EventBus& events,
                                Log& log);
    ~CollectionsBookmarksManager() override;

    std::vector<CollectionInfo> collections() override;
    void addOrUpdateCollection(const std::string& id, const std::string& name);
    void removeCollection(const std::string& id);
    std::vector<CollectionBookmark> loadBookmarks();
    // Merges numbered duplicate folders created by older versions. Runs once per installation, on
    // any thread.
    void cleanUpDuplicateCollections();
    // Copies the older list in the preferences into an empty index. Runs once per installation.
    void migrateSavedCollections();

    void applicationWillTerminate();
    void saveNow() override { applicationWillTerminate(); }

    // Writes a pending change on the calling thread; for the backup. Any thread.
    void flushNow();
    // Runs an operation that replaces or removes the index file; the list is then read again when
    // it is needed. Any thread.
    Result<void> replaceIndexFile(const std::function<Result<void>()>& replace);
    // Sets a function that is called after each write of the index, on the thread that wrote it.
    // When this returns, no call of the previous one is running.
    void setWrittenNotice(std::function<void()> notice);
    // Discards the stored unsaved changes, because the file was written after them.
    void dropUnsavedChange();
    // Writes the unchanged list again, because the file is lost or damaged.
    void rewriteIndex();
    // Corrects the id of a collection that is listed under a damaged one.
    void replaceId(const std::string& id, const std::string& right);
    // The list as last written to the file; absent if unknown.
    std::optional<std::vector<CollectionInfo>> secondCopy() const;

    std::filesystem::path indexFile() const;

  private:
    void changed();
    void armTimer();
    void startWrite();
    std::optional<CollectionBookmark> makeBookmark(const CollectionInfo& info) const;
    std::vector<CollectionInfo> cleanedList(
        const std::vector<CollectionInfo>& before,
        const std::map<std::string, std::vector<CollectionFolder>>& groups) const;

    InMemoryStorageManager& storage_;
    Bookmarks& bookmarks_;
    Keychain& keychain_;
    Scheduler& scheduler_;
    EventBus& events_;
    Log& log_;
    std::shared_ptr<CollectionIndexList> index_;  // shared with background writes
    std::atomic<bool> pendingSave_ = false;
    std::unique_ptr<Timer> saveTimer_;  // main thread only
    Lifetime lifetime_;
};

}  // namespace tembrix
