#include "core/collections/tag_library_manager.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "core/storage/data_layout.h"

namespace tembrix {

struct TagLibraryManager::Shared {
    std::mutex cacheLock;
    std::map<std::string, CollectionLists> cache;  // by id
    std::size_t drops = 0;                         // number of entries dropped so far

    std::optional<CollectionLists> cached(const std::string& id) {
        const std::lock_guard lock(cacheLock);
        const auto found = cache.find(id);
        return found == cache.end() ? std::nullopt : std::optional(found->second);
    }
    // The value to pass to store() after reading. If an entry is dropped in between, the data that
    // was read is outdated and not stored.
    std::size_t beforeReading() {
        const std::lock_guard lock(cacheLock);
        return drops;
    }
    void store(const std::string& id, const CollectionLists& lists, std::size_t before) {
        const std::lock_guard lock(cacheLock);
        if (drops == before)
            cache.insert_or_assign(id, lists);
    }
    void drop(const std::string& id) {
        const std::lock_guard lock(cacheLock);
        ++drops;
        cache.erase(id);
    }
    void clear() {
        const std::lock_guard lock(cacheLock);
        ++drops;
        cache.clear();
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

std::string TagLibraryManager::localization() const {
    const auto preferred = locale_.preferredLocalization();
    return preferred.empty() ? locale_.identifier() : preferred;
}

void TagLibraryManager::start() {
    standardCollections.set(loadStandardCollections(resources_, localization()));
    restoreLastSelectedCollection();
    tagUpdated_ = services_.events.observe<events::TagUpdated>(
        [this](const auto& event) { handleTagUpdated(event); });
    collectionDataChanged_ = services_.events.observe<events::CollectionDataChanged>(
        [this](const auto& event) { handleCollectionDataChanged(event); });
    refreshMerged();
    loadAllCollections();
}

void TagLibraryManager::followLanguage() {
    if (!tagUpdated_)
        return;  // not started yet
    const auto& before = *standardCollections;
    const auto chosen = std::find_if(before.begin(), before.end(), [this](const auto& one) {
        return !currentCollectionType->isUser() && one.name == *selectedStandardCollectionName;
    });
    const auto place = static_cast<std::size_t>(chosen - before.begin());
    const bool standard = chosen != before.end();
    standardCollections.set(loadStandardCollections(resources_, localization()));
    if (standard && place < standardCollections->size()) {
        const auto& counterpart = (*standardCollections)[place];
        rememberSelection(counterpart.name, {});
        active.set(counterpart.lists);
        selectedStandardCollectionName.set(counterpart.name);
    }
    refreshAllLists();
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

bool TagLibraryManager::isActive(const std::string& id) const {
    return currentCollectionType->isUser() && currentCollectionType->id == id;
}

std::optional<CollectionInfo> TagLibraryManager::userCollection(const std::string& id) {
    for (auto& info : services_.index.collections())
        if (info.id == id)
            return std::move(info);
    return std::nullopt;
}

std::optional<CollectionInfo> TagLibraryManager::userCollectionNamed(const std::string& name) {
    for (auto& info : services_.index.collections())
        if (info.name == name)
            return std::move(info);
    return std::nullopt;
}

void TagLibraryManager::rememberSelection(const std::string& name, const std::string& id) {
    auto& defaults = services_.storage.userDefaults();
    defaults.setText(layout::lastSelectedCollectionKey, name);
    if (id.empty())
        defaults.remove(layout::lastSelectedCollectionIdKey);
    else
        defaults.setText(layout::lastSelectedCollectionIdKey, id);
}

// The name decides if the id was never stored, or if the launch work has replaced it by another.
std::optional<CollectionInfo> TagLibraryManager::lastSelectedUserCollection() {
    const auto& defaults = services_.storage.userDefaults();
    if (const auto id = defaults.text(layout::lastSelectedCollectionIdKey))
        if (auto info = userCollection(*id))
            return info;
    const auto name = defaults.text(layout::lastSelectedCollectionKey);
    return name ? userCollectionNamed(*name) : std::nullopt;
}

void TagLibraryManager::restoreLastSelectedCollection() {
    ++switches_;
    const auto chosen = lastSelectedUserCollection();
    if (const auto lists = chosen ? collectionDataById(chosen->id) : std::nullopt) {
        activateUserCollection(*chosen, *lists);
        return;
    }
    const auto& standard = *standardCollections;
    if (standard.empty()) {
        activateNothing();
        return;
    }
    const auto name = services_.storage.userDefaults().text(layout::lastSelectedCollectionKey);
    auto found = std::find_if(standard.begin(), standard.end(),
                              [&](const auto& one) { return one.name == name; });
    if (found == standard.end())
        found = standard.begin();
    if (!chosen)  // the user's collection may be readable at the next start
        rememberSelection(found->name, {});
    activateStandardCollection(*found);
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
    rememberSelection(name, {});
    activateStandardCollection(*found);
}

void TagLibraryManager::activateStandardCollection(const StandardCollection& collection) {
    activate(TagCollection::standard(), collection.lists);
    selectedStandardCollectionName.set(collection.name);
    refreshAllLists();
}

void TagLibraryManager::selectUserCollection(const std::string& id) {
    ++switches_;
    // The collection may be renamed or deleted while it is read.
    const auto select = [this, id](const CollectionLists& lists) {
        if (const auto info = userCollection(id))
            activateUserCollection(*info, lists);
    };
    if (const auto lists = shared_->cached(id))
        return select(*lists);
    work_.run(
        Priority::userInitiated, [this, id] { return collectionDataById(id); },
        [this, select, choice = switches_](const std::optional<CollectionLists>& lists) {
            if (lists && choice == switches_)
                select(*lists);
        });
}

void TagLibraryManager::activateUserCollection(const CollectionInfo& info,
                                               const CollectionLists& lists) {
    activate(TagCollection::user(info.name, info.id), lists);
    rebuildHotkeys();
    selectedStandardCollectionName.set(info.name);
    rememberSelection(info.name, info.id);
}

void TagLibraryManager::deleteUserCollection(const CollectionInfo& collection) {
    services_.storage.deleteCollection(collection.id);
    services_.index.removeCollection(collection.id);
    shared_->drop(collection.id);
    if (isActive(collection.id)) {
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
    const auto info = userCollectionNamed(name);
    return info ? collectionDataById(info->id) : std::nullopt;
}

std::optional<CollectionLists> TagLibraryManager::collectionDataById(const std::string& id) {
    if (auto lists = shared_->cached(id))
        return lists;
    const auto before = shared_->beforeReading();
    const auto data = services_.storage.loadCollection(id);
    if (!data)
        return std::nullopt;
    auto lists = data->lists();
    shared_->store(id, lists, before);
    return lists;
}

TagLibraryManager::Merged TagLibraryManager::readAll(
    const std::vector<StandardCollection>& standard, const std::stop_token& stop) {
    const std::string subject = "TagLibraryManager: ";
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
        if (!data) {
            services_.log.line("❌ " + subject + "Failed to load collection '" + info.name + "'");
            continue;
        }
        services_.log.line("✅ " + subject + "Successfully loaded collection '" + info.name +
                           "' - tags: " + std::to_string(data->tags.size()) +
                           ", tagGroups: " + std::to_string(data->tagGroups.size()));
        const auto lists = data->lists();
        shared_->store(info.id, lists, before);
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

void TagLibraryManager::followIndex() {
    if (!currentCollectionType->isUser())
        return;
    const auto info = userCollection(currentCollectionType->id);
    if (!info) {
        restoreLastSelectedCollection();
        return;
    }
    if (info->name == currentCollectionType->name)
        return;
    rememberSelection(info->name, info->id);
    currentCollectionType.set(TagCollection::user(info->name, info->id));
    selectedStandardCollectionName.set(info->name);
}

void TagLibraryManager::handleCollectionDataChanged(const events::CollectionDataChanged& event) {
    followIndex();
    if (event.collectionName) {
        for (const auto& info : services_.index.collections())
            if (info.name == *event.collectionName) {
                shared_->drop(info.id);
                refreshActiveCollection(info.id);
            }
        // A running load may have read the data that this save replaced.
        changedWhileReloading_ = isReloadingCollections_;
        return;
    }
    shared_->clear();
    refreshActiveCollection(currentCollectionType->id);
    if (isReloadingCollections_) {
        changedWhileReloading_ = true;
        return;
    }
    isReloadingCollections_ = true;
    services_.events.post(events::CollectionsLoadingStarted{});
    loadAllCollections();
}

void TagLibraryManager::refreshActiveCollection(const std::string& id) {
    if (!isActive(id))
        return;
    const auto lists = collectionDataById(id);
    if (!lists)
        return;
    activate(*currentCollectionType, *lists);
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
