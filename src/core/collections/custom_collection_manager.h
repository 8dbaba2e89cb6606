#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/log.h"

#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/collections/collections_bookmarks_manager.h"
#include "core/notifications/event_bus.h"
#include "core/records/annotation_records.h"
#include "core/storage/in_memory_storage_manager.h"

namespace tembrix {

// What a CustomCollectionManager works with; one set serves the process.
struct CollectionServices {
    InMemoryStorageManager& storage;
    CollectionsBookmarksManager& index;
    Bookmarks& bookmarks;
    Scheduler& scheduler;
    EventBus& events;
    const Texts& texts;
    Log& log;
};

// One user collection in hand: loaded, made or changed. Not shared; made per use. Main thread only,
// but for loadCollection, which may run on any thread while nobody else uses the object.
class CustomCollectionManager {
  public:
    explicit CustomCollectionManager(CollectionServices& services);  // new
    CustomCollectionManager(CollectionServices& services,
                            const CollectionBookmark& existing);  // loads

    bool loadCollection(const std::string& name);

    const std::string& collectionName() const { return collectionName_; }
    const std::string& collectionID() const { return collectionID_; }
    const CollectionLists& lists() const { return lists_; }
    const std::optional<PlayField>& playField() const { return playField_; }
    bool isEditingExisting() const { return isEditingExisting_; }

  private:
    CollectionServices& services_;
    CollectionLists lists_;
    std::optional<PlayField> playField_;
    std::string collectionName_;
    std::string collectionID_;
    std::string originalName_;
    bool isEditingExisting_ = false;
};

}  // namespace tembrix
