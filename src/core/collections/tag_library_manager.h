#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "base/published.h"

#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/background/background_work.h"
#include "core/collections/custom_collection_manager.h"
#include "core/collections/merged_lists.h"
#include "core/collections/standard_collections.h"
#include "core/keyboard/hotkey_registry.h"
#include "core/notifications/events.h"
#include "core/records/annotation_records.h"

namespace tembrix {

// The store of all data that the user can mark with: one active collection, and the merged lists of
// all collections, which are used for every lookup by id. Published lists change on the main thread
// only.
class TagLibraryManager {
  public:
    // `resources` contains names.json and the standard collections.
    TagLibraryManager(CollectionServices& services, const std::filesystem::path& resources,
                      const Locale& locale);
    ~TagLibraryManager();

    // Reads the standard collections and the active one, and starts to read the user's collections
    // in the background. Called once; until then all lists are empty.
    void start();

    // Replaces the standard collections by those of the present language. A chosen one is replaced
    // by its counterpart, with the time events that are switched on.
    void followLanguage();

    // Registers the tags now and after each change. The registry must outlive the manager or be
    // reset.
    void setHotkeyRegistry(HotkeyRegistry* registry);

    Published<CollectionLists, TagLibraryManager> active;  // the lists of the chosen collection
    Published<CollectionLists, TagLibraryManager> merged;  // of all collections
    Published<std::set<std::string>, TagLibraryManager> selectedTimeEvents;
    Published<TagCollection, TagLibraryManager> currentCollectionType;
    Published<std::vector<StandardCollection>, TagLibraryManager> standardCollections;
    Published<std::optional<std::string>, TagLibraryManager> selectedStandardCollectionName;

    void selectStandardCollection(const std::string& name);
    // Selects the collection immediately if it was read before, otherwise once it has been read.
    void selectUserCollection(const std::string& id);
    void deleteUserCollection(const CollectionInfo& collection);
    void restoreLastSelectedCollection();
    void refreshAllLists();
    void rebuildHotkeys();
    std::optional<CollectionLists> collectionData(const std::string& name);  // any thread
    std::vector<CollectionInfo> userCollections();
    bool isLoadingCollections() const { return isReloadingCollections_; }
    void toggleTimeEvent(const std::string& id);
    // Adds a tag group to the active lists in memory only; used for the drawings timeline.
    void addTransientTagGroup(const TagGroup& group);

    const Tag* tagById(const std::string& id) const;  // valid until the merged lists change
    // The tag as the user can mark with it now: a save changes the active lists before the merged
    // ones. Valid until either changes.
    const Tag* presentTagById(const std::string& id) const;
    const Label* labelById(const std::string& id) const;
    const LabelGroupData* labelGroupContaining(const std::string& labelId) const;
    std::vector<Label> labelsForTag(const Tag& tag) const;

  private:
    std::string localization() const;

    struct Merged {
        CollectionLists lists;
        RecordPlaces places;
    };
    struct Shared;  // data shared by the background load and collectionData()

    void handleTagUpdated(const events::TagUpdated& event);
    void handleCollectionDataChanged(const events::CollectionDataChanged& event);
    void activate(const TagCollection& collection, const CollectionLists& lists);
    void activateUserCollection(const CollectionInfo& info, const CollectionLists& lists);
    void activateStandardCollection(const StandardCollection& collection);
    void activateNothing();
    bool isActive(const std::string& id) const;
    std::optional<CollectionInfo> lastSelectedUserCollection();
    void rememberSelection(const std::string& name, const std::string& id);
    std::optional<CollectionInfo> userCollection(const std::string& id);
    std::optional<CollectionInfo> userCollectionNamed(const std::string& name);
    std::optional<CollectionLists> collectionDataById(const std::string& id);  // any thread
    // Handles a rename or the removal of the active collection.
    void followIndex();
    // Reads the active collection again if it is the given one.
    void refreshActiveCollection(const std::string& id);
    void refreshMerged();
    void loadAllCollections();
    Merged readAll(const std::vector<StandardCollection>& standard, const std::stop_token& stop);

    CollectionServices& services_;
    const std::filesystem::path resources_;
    const Locale& locale_;
    HotkeyRegistry* hotkeys_ = nullptr;
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<SerialQueue> collectionLoadingQueue_;
    RecordPlaces places_;  // indices into the merged lists
    bool isReloadingCollections_ = false;
    bool changedWhileReloading_ = false;  // the data being loaded is already outdated
    int activeSaves_ = 0;  // how often the active collection was read again after a save
    int switches_ = 0;     // choices so far; data read for an earlier choice is not activated
    Subscription tagUpdated_;
    Subscription collectionDataChanged_;
    BackgroundWork work_;
};

}  // namespace tembrix
