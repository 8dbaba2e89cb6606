#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/published.h"

#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/collections/custom_collection_manager.h"
#include "core/collections/merged_lists.h"
#include "core/collections/standard_collections.h"
#include "core/keyboard/hotkey_registry.h"
#include "core/notifications/events.h"
#include "core/records/annotation_records.h"

namespace tembrix {

// The process-wide store of what a user can mark with: one active collection, and merged lists of
// everything from all collections, which serve every lookup by id. Published lists change on the
// main thread only.
class TagLibraryManager {
  public:
    // `resources` holds names.json and the standard collections.
    TagLibraryManager(CollectionServices& services, const std::filesystem::path& resources,
                      const Locale& locale);
    ~TagLibraryManager();

    // Reads the standard collections and the active one, and begins to read the user's own in the
    // background. Called once; until then every list is empty.
    void start();

    // Takes the tags now and on every later change. The registry must outlive the manager or be
    // reset.
    void setHotkeyRegistry(HotkeyRegistry* registry);

    Published<CollectionLists, TagLibraryManager> active;  // the lists of the chosen collection
    Published<CollectionLists, TagLibraryManager> merged;  // of all collections
    Published<std::set<std::string>, TagLibraryManager> selectedTimeEvents;
    Published<TagCollection, TagLibraryManager> currentCollectionType;
    Published<std::vector<StandardCollection>, TagLibraryManager> standardCollections;
    Published<std::optional<std::string>, TagLibraryManager> selectedStandardCollectionName;

    void selectStandardCollection(const std::string& name);
    // At once if the collection was read before, otherwise as soon as it has been read.
    void selectUserCollection(const std::string& name);
    void deleteUserCollection(const CollectionInfo& collection);
    void restoreLastSelectedCollection();
    void refreshAllLists();
    void rebuildHotkeys();
    std::optional<CollectionLists> collectionData(const std::string& name);  // any thread
    std::vector<CollectionInfo> userCollections();
    bool isLoadingCollections() const { return isReloadingCollections_; }
    void toggleTimeEvent(const std::string& id);
    // Adds a tag group to the active lists in memory only, as the drawings timeline needs.
    void addTransientTagGroup(const TagGroup& group);

    const Tag* tagById(const std::string& id) const;  // valid until the merged lists change
    const Label* labelById(const std::string& id) const;
    const LabelGroupData* labelGroupContaining(const std::string& labelId) const;
    std::vector<Label> labelsForTag(const Tag& tag) const;

  private:
    struct Shared;  // what the background load and collectionData() share

    void handleTagUpdated(const events::TagUpdated& event);
    void handleCollectionDataChanged(const events::CollectionDataChanged& event);
    void activate(const TagCollection& collection, const CollectionLists& lists);
    void switchToUserCollection(const std::string& name, const CollectionLists& lists);
    void refreshActiveCollection(const std::string& name, const CollectionLists& lists);
    void activateNothing();
    std::string idOfUserCollection(const std::string& name);
    // Follows a rename or the removal of the active collection.
    void followIndex();
    void refreshMerged();
    void loadAllCollections();

    CollectionServices& services_;
    const std::filesystem::path resources_;
    const Locale& locale_;
    HotkeyRegistry* hotkeys_ = nullptr;
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<SerialQueue> collectionLoadingQueue_;
    RecordPlaces places_;  // in the merged lists
    bool isReloadingCollections_ = false;
    bool changedWhileReloading_ = false;  // what is being loaded is out of date already
    std::string activeId_;                // of an active user collection
    int activeSaves_ = 0;  // how often the active collection was read again after a save
    int switches_ = 0;     // a collection that was read too late gives way to a later choice
    Subscription tagUpdated_;
    Subscription collectionDataChanged_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
