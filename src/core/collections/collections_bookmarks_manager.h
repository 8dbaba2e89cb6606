#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"

#include "ports/bookmarks.h"
#include "ports/keychain.h"
#include "ports/scheduler.h"

#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/storage/collection_index_storage.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// The index of user collections: which exist, under which id and display name. Kept in one small
// file and saved in bursts. Safe from any thread, except where told otherwise.
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
    // The one-off merge of numbered duplicate folders that older data left behind; any thread.
    void cleanUpDuplicateCollections();
    // Copies the older list in the preferences into an empty index; once per installation.
    void migrateSavedCollections();

    void applicationWillTerminate();
    void saveNow() override { applicationWillTerminate(); }

    // Writes a pending change on the calling thread; for the backup. Any thread.
    void flushNow();
    // Forgets the cached list, because the file was replaced from outside. Any thread.
    void rereadIndex();

    std::filesystem::path indexFile() const;

  private:
    struct Index;  // the cached list and its file, which a background write shares

    void changed();
    void armTimer();
    void startWrite();
    std::optional<CollectionBookmark> makeBookmark(const CollectionInfo& info) const;

    InMemoryStorageManager& storage_;
    Bookmarks& bookmarks_;
    Keychain& keychain_;
    Scheduler& scheduler_;
    EventBus& events_;
    Log& log_;
    std::shared_ptr<Index> index_;
    std::atomic<bool> pendingSave_ = false;
    std::unique_ptr<Timer> saveTimer_;  // main thread only
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
