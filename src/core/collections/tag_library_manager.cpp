#include "core/collections/tag_library_manager.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <unordered_set>

namespace tembrix {

namespace {

constexpr const char* lastSelectedKey = "lastSelectedCollection";

template <class Record>
void appendNew(std::vector<Record>& list, std::unordered_set<std::string>& seen,
               const std::vector<Record>& more) {
    for (const auto& record : more)
        if (seen.insert(record.id).second)
            list.push_back(record);
}

// Joins lists; of records with one id the first one stays.
class Merge {
  public:
    void add(const CollectionLists& more) {
        appendNew(lists_.tags, tags_, more.tags);
        appendNew(lists_.tagGroups, tagGroups_, more.tagGroups);
        appendNew(lists_.labelGroups, labelGroups_, more.labelGroups);
        appendNew(lists_.labels, labels_, more.labels);
        appendNew(lists_.timeEvents, timeEvents_, more.timeEvents);
    }
    CollectionLists take() { return std::move(lists_); }

  private:
    CollectionLists lists_;
    std::unordered_set<std::string> tags_, tagGroups_, labelGroups_, labels_, timeEvents_;
};

template <class Record>
void indexById(std::map<std::string, std::size_t, std::less<>>& index,
               const std::vector<Record>& list) {
    index.clear();
    for (std::size_t i = 0; i < list.size(); ++i)
        index.emplace(list[i].id, i);
}

}  // namespace

struct TagLibraryManager::Shared {
    std::mutex cacheLock;
    std::map<std::string, CollectionLists> cache;  // by display name
    std::mutex running;                            // held by a load; the destructor waits for it
    std::atomic<bool> stopped = false;

    std::optional<CollectionLists> cached(const std::string& name) {
        const std::lock_guard lock(cacheLock);
        const auto found = cache.find(name);
        return found == cache.end() ? std::nullopt : std::optional(found->second);
    }
    void store(const std::string& name, const CollectionLists& lists) {
        const std::lock_guard lock(cacheLock);
        cache.insert_or_assign(name, lists);
    }
    void drop(const std::string& name) {
        const std::lock_guard lock(cacheLock);
        cache.erase(name);
    }
    void clear() {
        const std::lock_guard lock(cacheLock);
        cache.clear();
    }
};

TagLibraryManager::TagLibraryManager(CollectionServices& services,
                                     const std::filesystem::path& resources, const Locale& locale)
    : services_(services),
      shared_(std::make_shared<Shared>()),
      collectionLoadingQueue_(services.scheduler.serialQueue("com.tembrix.collectionLoading")) {
    auto localization = locale.preferredLocalization();
    if (localization.empty())
        localization = locale.identifier();
    standardCollections.set(loadStandardCollections(resources, localization));
    restoreLastSelectedCollection();
    tagUpdated_ = services_.events.observe<events::TagUpdated>(
        [this](const auto& event) { handleTagUpdated(event); });
    collectionDataChanged_ = services_.events.observe<events::CollectionDataChanged>(
        [this](const auto& event) { handleCollectionDataChanged(event); });
    setMerged(*active);
    loadAllCollections();
}

TagLibraryManager::~TagLibraryManager() {
    shared_->stopped = true;
    const std::lock_guard wait(shared_->running);
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
    const auto name = services_.storage.userDefaults().text(lastSelectedKey);
    if (name) {
        CustomCollectionManager collection(services_);
        if (collection.loadCollection(*name)) {
            activate(TagCollection::user(*name), collection.lists());
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
}

void TagLibraryManager::selectStandardCollection(const std::string& name) {
    const auto& standard = *standardCollections;
    const auto found = std::find_if(standard.begin(), standard.end(),
                                    [&](const auto& one) { return one.name == name; });
    if (found == standard.end())
        return;
    ++switches_;
    services_.storage.userDefaults().setText(lastSelectedKey, name);
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
    services_.scheduler.background(
        Priority::userInitiated, [this, name, choice = switches_, shared = shared_,
                                  &services = services_, alive = std::weak_ptr(alive_)] {
            const std::lock_guard running(shared->running);
            if (shared->stopped)
                return;
            CustomCollectionManager collection(services);
            if (!collection.loadCollection(name))
                return;
            shared->store(name, collection.lists());
            services.scheduler.onMain([this, name, choice, alive, lists = collection.lists()] {
                if (!alive.expired() && choice == switches_)
                    switchToUserCollection(name, lists);
            });
        });
}

void TagLibraryManager::switchToUserCollection(const std::string& name,
                                               const CollectionLists& lists) {
    activate(TagCollection::user(name), lists);
    rebuildHotkeys();
    selectedStandardCollectionName.set(name);
    services_.storage.userDefaults().setText(lastSelectedKey, name);
}

void TagLibraryManager::deleteUserCollection(const CollectionInfo& collection) {
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
    setMerged(*active);
    loadAllCollections();
    rebuildHotkeys();
}

std::vector<CollectionInfo> TagLibraryManager::userCollections() {
    return services_.index.collections();
}

std::optional<CollectionLists> TagLibraryManager::collectionData(const std::string& name) {
    if (auto lists = shared_->cached(name))
        return lists;
    CustomCollectionManager collection(services_);
    if (!collection.loadCollection(name))
        return std::nullopt;
    shared_->store(name, collection.lists());
    return collection.lists();
}

void TagLibraryManager::loadAllCollections() {
    collectionLoadingQueue_->async([this, shared = shared_, &services = services_,
                                    standard = *standardCollections,
                                    alive = std::weak_ptr(alive_)] {
        const std::lock_guard running(shared->running);
        if (shared->stopped)
            return;
        const std::string subject = "TagLibraryManager: ";
        const auto infos = services.index.collections();
        services.log.line("📚 " + subject + "Loading " + std::to_string(infos.size()) +
                          " user collections");
        Merge merge;
        for (const auto& info : infos) {
            if (shared->stopped)
                return;
            services.log.line("📚 " + subject + "Loading collection '" + info.name +
                              "' (id: " + info.id + ")");
            const auto data = services.storage.loadCollection(info.id);
            if (!data) {
                services.log.line("❌ " + subject + "Failed to load collection '" + info.name + "'");
                continue;
            }
            services.log.line("✅ " + subject + "Successfully loaded collection '" + info.name +
                              "' - tags: " + std::to_string(data->tags.size()) +
                              ", tagGroups: " + std::to_string(data->tagGroups.size()));
            shared->store(info.name, data->lists());
            merge.add(data->lists());
        }
        for (const auto& collection : standard)
            merge.add(collection.lists);
        services.scheduler.onMain([this, alive, lists = merge.take()]() mutable {
            if (alive.expired())
                return;
            setMerged(std::move(lists));
            isReloadingCollections_ = false;
            services_.log.line(
                "✅ TagLibraryManager: Finished loading all collections - total "
                "tags: " +
                std::to_string(merged->tags.size()) +
                ", tagGroups: " + std::to_string(merged->tagGroups.size()));
            services_.events.post(events::CollectionsLoadingFinished{});
        });
    });
}

void TagLibraryManager::handleTagUpdated(const events::TagUpdated& event) {
    if (event.tagId)
        refreshAllLists();
}

void TagLibraryManager::handleCollectionDataChanged(const events::CollectionDataChanged& event) {
    if (event.collectionName) {
        const auto& name = *event.collectionName;
        shared_->drop(name);
        const auto lists = collectionData(name);
        if (lists && *currentCollectionType == TagCollection::user(name))
            refreshActiveCollection(name, *lists);
        return;
    }
    shared_->clear();
    if (currentCollectionType->isUser()) {
        const auto name = currentCollectionType->name;
        if (const auto lists = collectionData(name))
            refreshActiveCollection(name, *lists);
    }
    if (isReloadingCollections_)
        return;
    isReloadingCollections_ = true;
    services_.events.post(events::CollectionsLoadingStarted{});
    loadAllCollections();
}

void TagLibraryManager::refreshActiveCollection(const std::string& name,
                                                const CollectionLists& lists) {
    activate(TagCollection::user(name), lists);
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

void TagLibraryManager::setMerged(CollectionLists lists) {
    Merge merge;
    merge.add(lists);
    lists = merge.take();
    indexById(tagIndex_, lists.tags);
    indexById(labelIndex_, lists.labels);
    groupOfLabel_.clear();
    for (std::size_t i = 0; i < lists.labelGroups.size(); ++i)
        for (const auto& label : lists.labelGroups[i].lables)
            groupOfLabel_.emplace(label, i);
    merged.set(std::move(lists));
}

const Tag* TagLibraryManager::tagById(const std::string& id) const {
    const auto found = tagIndex_.find(id);
    return found == tagIndex_.end() ? nullptr : &merged->tags[found->second];
}

const Label* TagLibraryManager::labelById(const std::string& id) const {
    const auto found = labelIndex_.find(id);
    return found == labelIndex_.end() ? nullptr : &merged->labels[found->second];
}

const LabelGroupData* TagLibraryManager::labelGroupContaining(const std::string& labelId) const {
    const auto found = groupOfLabel_.find(labelId);
    return found == groupOfLabel_.end() ? nullptr : &merged->labelGroups[found->second];
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
