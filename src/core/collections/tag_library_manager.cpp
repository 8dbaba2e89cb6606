#include "core/collections/tag_library_manager.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "core/storage/data_layout.h"

namespace tembrix {

struct TagLibraryManager::Shared {
    std::mutex cacheLock;
    std::map<std::string, CollectionLists> cache;  // by display name
    std::size_t drops = 0;                         // number of entries dropped so far
    std::vector<std::string> deleted;              // ids, in the order of their deletion

    std::optional<CollectionLists> cached(const std::string& name) {
        const std::lock_guard lock(cacheLock);
        const auto found = cache.find(name);
        return found == cache.end() ? std::nullopt : std::optional(found->second);
    }
    // The value to pass to store() after reading. If an entry is dropped in between, the data that
    // was read is outdated and not stored.
    std::size_t beforeReading() {
        const std::lock_guard lock(cacheLock);
        return drops;
    }
    void store(const std::string& name, const CollectionLists& lists, std::size_t before) {
        const std::lock_guard lock(cacheLock);
        if (drops == before)
            cache.insert_or_assign(name, lists);
    }
    void drop(const std::string& name) {
        const std::lock_guard lock(cacheLock);
        ++drops;
        cache.erase(name);
    }
    void clear() {
        const std::lock_guard lock(cacheLock);
        ++drops;
        cache.clear();
    }
    void noteDeletion(const std::string& id) {
        const std::lock_guard lock(cacheLock);
        deleted.push_back(id);
    }
    std::size_t deletions() {
        const std::lock_guard lock(cacheLock);
        return deleted.size();
    }
    bool wasDeletedSince(std::size_t before, const std::string& id) {
        const std::lock_guard lock(cacheLock);
        return std::find(deleted.begin() + static_cast<std::ptrdiff_t>(before), deleted.end(),
                         id) != deleted.end();
    }
};

TagLibraryManager::TagLibraryManager(CollectionServices& services,
                                     const std::filesystem::path& resources, const Locale& locale)
    : services_(services),
      resources_(resources),
      locale_(locale),
      shared_(std::make_shared<Shared>()),
      collectionLoadingQueue_(services.scheduler.serialQueue("com.tembrix.collectionLoading")),
      work_(services.scheduler) {}

void TagLibraryManager::start() {
    auto localization = locale_.preferredLocalization();
    if (localization.empty())
        localization = locale_.identifier();
    standardCollections.set(loadStandardCollections(resources_, localization));
    restoreLastSelectedCollection();
    tagUpdated_ = services_.events.observe<events::TagUpdated>(
        [this](const auto& event) { handleTagUpdated(event); });
    collectionDataChanged_ = services_.events.observe<events::CollectionDataChanged>(
        [this](const auto& event) { handleCollectionDataChanged(event); });
    refreshMerged();
    loadAllCollections();
}

TagLibraryManager::~TagLibraryManager() {
    work_.cancelAndWait();
}

void TagLibraryManager::setHotkeyRegistry(HotkeyRegistry* registry) {
    hotkeys_ = registry;
    rebuildHotkeys();
}

void TagLibraryManager::rebuildHotkeys() {
    if (hotkeys_)
        hotkeys_->registerHotkeys(active->tags, *currentCollectionType);
}

void TagLibraryManager::activate(const TagCollection& collection, const CollectionLists& lists) {
    active.set(lists);
    selectedTimeEvents.set({});
    currentCollectionType.set(collection);
}

void TagLibraryManager::restoreLastSelectedCollection() {
    ++switches_;
    const auto name = services_.storage.userDefaults().text(layout::lastSelectedCollectionKey);
    if (name) {
        CustomCollectionManager collection(services_);
        if (collection.loadCollection(*name)) {
            activate(TagCollection::user(*name), collection.lists());
            activeId_ = collection.collectionID();
            rebuildHotkeys();
            selectedStandardCollectionName.set(*name);
            return;
        }
    }
    const auto& standard = *standardCollections;
    const bool known = name && std::any_of(standard.begin(), standard.end(),
                                           [&](const auto& one) { return one.name == *name; });
    if (known)
        selectStandardCollection(*name);
    else if (!standard.empty())
        selectStandardCollection(std::string(standard.front().name));
    else
        activateNothing();
}

// Shows no data of a deleted collection.
void TagLibraryManager::activateNothing() {
    activate(TagCollection::standard(), {});
    selectedStandardCollectionName.set(std::nullopt);
    rebuildHotkeys();
}

void TagLibraryManager::selectStandardCollection(const std::string& name) {
    const auto& standard = *standardCollections;
    const auto found = std::find_if(standard.begin(), standard.end(),
                                    [&](const auto& one) { return one.name == name; });
    if (found == standard.end())
        return;
    ++switches_;
    services_.storage.userDefaults().setText(layout::lastSelectedCollectionKey, name);
    activate(TagCollection::standard(), found->lists);
    selectedStandardCollectionName.set(found->name);
    refreshAllLists();
}

void TagLibraryManager::selectUserCollection(const std::string& name) {
    ++switches_;
    if (const auto lists = shared_->cached(name)) {
        switchToUserCollection(name, *lists);
        return;
    }
    work_.run(
        Priority::userInitiated, [this, name] { return collectionData(name); },
        [this, name, choice = switches_](const std::optional<CollectionLists>& lists) {
            if (lists && choice == switches_)
                switchToUserCollection(name, *lists);
        });
}

void TagLibraryManager::switchToUserCollection(const std::string& name,
                                               const CollectionLists& lists) {
    activate(TagCollection::user(name), lists);
    activeId_ = idOfUserCollection(name);
    rebuildHotkeys();
    selectedStandardCollectionName.set(name);
    services_.storage.userDefaults().setText(layout::lastSelectedCollectionKey, name);
}

void TagLibraryManager::deleteUserCollection(const CollectionInfo& collection) {
    shared_->noteDeletion(collection.id);
    services_.storage.deleteCollection(collection.id);
    services_.index.removeCollection(collection.id);
    shared_->drop(collection.name);
    if (*currentCollectionType == TagCollection::user(collection.name)) {
        restoreLastSelectedCollection();
        rebuildHotkeys();
    }
    refreshAllLists();
    services_.events.post(events::CollectionDataChanged{});
}

void TagLibraryManager::refreshAllLists() {
    refreshMerged();
    loadAllCollections();
    rebuildHotkeys();
}

std::vector<CollectionInfo> TagLibraryManager::userCollections() {
    return services_.index.collections();
}

std::optional<CollectionLists> TagLibraryManager::collectionData(const std::string& name) {
    if (auto lists = shared_->cached(name))
        return lists;
    const auto before = shared_->beforeReading();
    CustomCollectionManager collection(services_);
    if (!collection.loadCollection(name))
        return std::nullopt;
    shared_->store(name, collection.lists(), before);
    return collection.lists();
}

TagLibraryManager::Merged TagLibraryManager::readAll(
    const std::vector<StandardCollection>& standard, const std::stop_token& stop) {
    const std::string subject = "TagLibraryManager: ";
    const auto deletions = shared_->deletions();
    const auto infos = services_.index.collections();
    services_.log.line("📚 " + subject + "Loading " + std::to_string(infos.size()) +
                       " user collections");
    Merged all;
    for (const auto& info : infos) {
        if (stop.stop_requested())
            return all;
        services_.log.line("📚 " + subject + "Loading collection '" + info.name +
                           "' (id: " + info.id + ")");
        const auto before = shared_->beforeReading();
        const auto data = services_.storage.loadCollection(info.id);
        if (shared_->wasDeletedSince(deletions, info.id)) {
            // Its folder still exists, and loading it has stored a working copy again.
            work_.onMain([this, id = info.id] { services_.storage.deleteCollection(id); });
            continue;
        }
        if (!data) {
            services_.log.line("❌ " + subject + "Failed to load collection '" + info.name + "'");
            continue;
        }
        services_.log.line("✅ " + subject + "Successfully loaded collection '" + info.name +
                           "' - tags: " + std::to_string(data->tags.size()) +
                           ", tagGroups: " + std::to_string(data->tagGroups.size()));
        const auto lists = data->lists();
        shared_->store(info.name, lists, before);
        addCollection(all.lists, all.places, lists);
    }
    for (const auto& collection : standard)
        addCollection(all.lists, all.places, collection.lists);
    return all;
}

void TagLibraryManager::loadAllCollections() {
    work_.run(
        *collectionLoadingQueue_,
        [this, standard = *standardCollections](const std::stop_token& stop) {
            return readAll(standard, stop);
        },
        [this, saves = activeSaves_](Merged all) {
            if (saves != activeSaves_)  // the load may have read the old lists
                putCollection(all.lists, all.places, *active);
            places_ = std::move(all.places);
            merged.set(std::move(all.lists));
            if (std::exchange(changedWhileReloading_, false)) {
                loadAllCollections();
                return;
            }
            isReloadingCollections_ = false;
            services_.log.line(
                "✅ TagLibraryManager: Finished loading all collections - total tags: " +
                std::to_string(merged->tags.size()) +
                ", tagGroups: " + std::to_string(merged->tagGroups.size()));
            services_.events.post(events::CollectionsLoadingFinished{});
        });
}

void TagLibraryManager::handleTagUpdated(const events::TagUpdated& event) {
    if (event.tagId)
        refreshAllLists();
}

std::string TagLibraryManager::idOfUserCollection(const std::string& name) {
    for (const auto& info : services_.index.collections())
        if (info.name == name)
            return info.id;
    return {};
}

void TagLibraryManager::followIndex() {
    if (!currentCollectionType->isUser() || activeId_.empty())
        return;
    const auto infos = services_.index.collections();
    const auto found = std::find_if(infos.begin(), infos.end(), [&](const CollectionInfo& info) {
        return info.id == activeId_;
    });
    if (found == infos.end()) {
        restoreLastSelectedCollection();
        return;
    }
    const std::string name = found->name;
    if (name == currentCollectionType->name)
        return;
    ++switches_;
    shared_->drop(currentCollectionType->name);
    services_.storage.userDefaults().setText(layout::lastSelectedCollectionKey, name);
    currentCollectionType.set(TagCollection::user(name));
    selectedStandardCollectionName.set(name);
}

void TagLibraryManager::handleCollectionDataChanged(const events::CollectionDataChanged& event) {
    followIndex();
    if (event.collectionName) {
        const auto& name = *event.collectionName;
        shared_->drop(name);
        const auto lists = collectionData(name);
        if (lists && *currentCollectionType == TagCollection::user(name))
            refreshActiveCollection(name, *lists);
        // A running load may have read the data that this save replaced.
        changedWhileReloading_ = isReloadingCollections_;
        return;
    }
    shared_->clear();
    if (currentCollectionType->isUser()) {
        const auto name = currentCollectionType->name;
        if (const auto lists = collectionData(name))
            refreshActiveCollection(name, *lists);
    }
    if (isReloadingCollections_) {
        changedWhileReloading_ = true;
        return;
    }
    isReloadingCollections_ = true;
    services_.events.post(events::CollectionsLoadingStarted{});
    loadAllCollections();
}

void TagLibraryManager::refreshActiveCollection(const std::string& name,
                                                const CollectionLists& lists) {
    activate(TagCollection::user(name), lists);
    ++activeSaves_;
    rebuildHotkeys();
    services_.events.post(events::CurrentCollectionRefreshed{});
}

void TagLibraryManager::toggleTimeEvent(const std::string& id) {
    selectedTimeEvents.update([&](std::set<std::string>& selected) {
        if (selected.erase(id) == 0)
            selected.insert(id);
    });
}

void TagLibraryManager::addTransientTagGroup(const TagGroup& group) {
    active.update([&](CollectionLists& lists) { lists.tagGroups.push_back(group); });
}

// The active lists are used at once. The records of other collections remain until they are loaded
// again, so that their stamps keep names and colors and follow a rename.
void TagLibraryManager::refreshMerged() {
    merged.update([this](CollectionLists& lists) { putCollection(lists, places_, *active); });
}

const Tag* TagLibraryManager::tagById(const std::string& id) const {
    const auto found = places_.tags.find(id);
    return found == places_.tags.end() ? nullptr : &merged->tags[found->second];
}

const Tag* TagLibraryManager::presentTagById(const std::string& id) const {
    for (const Tag& tag : active->tags)
        if (tag.id == id)
            return &tag;
    return tagById(id);
}

const Label* TagLibraryManager::labelById(const std::string& id) const {
    const auto found = places_.labels.find(id);
    return found == places_.labels.end() ? nullptr : &merged->labels[found->second];
}

const LabelGroupData* TagLibraryManager::labelGroupContaining(const std::string& labelId) const {
    const auto found = places_.groupOfLabel.find(labelId);
    return found == places_.groupOfLabel.end() ? nullptr : &merged->labelGroups[found->second];
}

std::vector<Label> TagLibraryManager::labelsForTag(const Tag& tag) const {
    const std::set<std::string> groups(tag.lablesGroup.begin(), tag.lablesGroup.end());
    std::set<std::string> ids;
    for (const auto& group : merged->labelGroups)
        if (groups.contains(group.id))
            ids.insert(group.lables.begin(), group.lables.end());
    std::vector<Label> labels;
    for (const auto& label : merged->labels)
        if (ids.contains(label.id))
            labels.push_back(label);
    return labels;
}

}  // namespace tembrix
