// Repairs at launch: interrupted operations, damaged lists, lost working copies.

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/files.h"

#include "ports/user_defaults.h"

#include "core/collections/duplicate_collections.h"
#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/folder_copy.h"
#include "core/safety/timeline_document.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"
#include "core/storage/set_aside.h"
#include "core/storage/video_list_store.h"

namespace tembrix {

namespace fs = std::filesystem;

namespace {

// Whether one id can be a copy of the other with a damaged byte.
bool differInOneByte(const std::string& one, const std::string& other) {
    if (one.size() != other.size())
        return false;
    int different = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
        different += one[i] != other[i] ? 1 : 0;
    return different == 1;
}

bool isVideoList(const Bytes& value) {
    return decode<std::vector<VideosData>>(value).ok() ||
           decode<std::vector<VideosDataOldFormat>>(value).ok();
}

}  // namespace

void DataSyncManager::finishInterrupted(const fs::path& kept) const {
    const fs::path copies = backupRoot() / layout::dataFolder;
    finishReplacingIn(documentsFolder(), [&](const fs::path& target) {
        const fs::path name = target.filename();
        return name == layout::collectionsFolder || name == layout::playFieldsFolder
                   ? kept / layout::dataFolder / name
                   : kept / name;
    });
    for (const auto& folder : {backupRoot(), copies, copies / layout::collectionsFolder})
        finishReplacingIn(folder);
    for (const auto& folder : {documentsFolder(), documentsFolder() / layout::timelinesFolder,
                               documentsFolder() / layout::playFieldsFolder, backupRoot(),
                               backupTimelinesFolder(), copies / layout::playFieldsFolder})
        removeUnfinishedReplacements(folder);
    for (const auto& collections :
         {documentsFolder() / layout::collectionsFolder, copies / layout::collectionsFolder}) {
        std::error_code failure;
        for (auto entry = fs::directory_iterator(collections, failure);
             !failure && entry != fs::directory_iterator(); entry.increment(failure))
            removeUnfinishedReplacements(entry->path());
    }
}

void DataSyncManager::repairAtLaunch() {
    const RepairScope scope;
    const auto repair = secondCopy_.repairDefaults();
    if (repair.listReplaced)
        notify(repair.listWasLost ? SafetyNotice::videoListLost : SafetyNotice::videoListRepaired);
    if (repair.lostChanges)
        services_.storage.noteLostChanges();
    if (repair.indexIsOlder)
        services_.index.dropUnsavedChange();
    repairVideoList();
    recoverIndex();
    // While the database cannot be read, all copies are newer, but nothing is lost.
    const auto status = services_.defaults.status();
    const bool wasRead = status.allStored || status.fault == StorageFault::diskFull ||
                         status.fault == StorageFault::readOnly;
    if (!services_.storage.hasLostChanges() || !wasRead)
        return;
    repairIndexIds(true);
    log("⚠️ DataSync: The defaults lost their latest changes, newer copies are used");
    notify(SafetyNotice::newerCopiesUsed);
}

std::optional<std::map<std::string, Bytes>> DataSyncManager::savedDefaults(
    const fs::path& root) const {
    const auto file = readFile(root / layout::defaultsBackupFile);
    return file ? services_.propertyLists.decode(*file).optional() : std::nullopt;
}

// If there is no date of the last backup, all defaults are lost, and the launch work restores them.
// A list that can be read but does not match its checksum is replaced only by one that does,
// because the checksum itself may be damaged.
void DataSyncManager::repairVideoList() {
    const auto stored = services_.defaults.data(layout::videosDataKey);
    const auto check = services_.defaults.text(layout::videosCheckKey);
    const bool canBeRead = stored && isVideoList(*stored);
    if (const auto doubt = services_.defaults.text(layout::videosDoubtKey)) {
        if (stored && checkOf(*stored) == *doubt)
            notify(SafetyNotice::videoListDoubtful);
        else
            services_.defaults.remove(layout::videosDoubtKey);
    }
    if (canBeRead ? matchesCheck(check, *stored)
                  : !stored && !services_.defaults.date(layout::lastSyncDateKey))
        return;
    const auto saved = savedVideoList();
    if (canBeRead && saved == stored)
        return storeVideoList(services_.defaults, *stored);
    if (canBeRead && (!saved || !matchesCheck(check, *saved))) {
        services_.defaults.setText(layout::videosDoubtKey, checkOf(*stored));
        // The backup's list may be the better one.
        if (saved)
            services_.defaults.setBoolean(layout::unreadableKey(layout::videosDataKey), true);
        return notify(SafetyNotice::videoListDoubtful);
    }
    if (stored)
        setAside(services_.defaults, services_.log, layout::videosDataKey, *stored);
    if (saved) {
        storeVideoList(services_.defaults, *saved);
        log("⚠️ DataSync: The list of videos was lost or damaged, the backup's is used");
        notify(stored ? SafetyNotice::videoListRepaired : SafetyNotice::videoListLost);
    } else if (stored) {
        services_.defaults.setBoolean(layout::unreadableKey(layout::videosDataKey), true);
        notify(SafetyNotice::videoListUnreadable);
    }
}

// The encoded list of videos in the backup; absent if it cannot be read.
std::optional<Bytes> DataSyncManager::savedVideoList() const {
    auto saved = savedDefaults(backupRoot());
    if (!saved)
        return std::nullopt;
    const auto list = saved->find(layout::videosDataKey);
    if (list == saved->end() || !decode<std::vector<VideosData>>(list->second))
        return std::nullopt;
    return std::move(list->second);
}

bool DataSyncManager::indexReads() const {
    const auto file = readFile(services_.index.indexFile());
    return file && decode<std::vector<CollectionInfo>>(*file);
}

// If the index is lost or damaged, lists the existing collections again, with the names in its
// second copy or in the backup.
void DataSyncManager::recoverIndex() {
    const auto file = readFile(services_.index.indexFile());
    const auto stored = file ? decode<std::vector<CollectionInfo>>(*file).optional() : std::nullopt;
    const auto listed = services_.index.collections();
    if (stored || !listed.empty()) {
        if (stored != listed)
            services_.index.rewriteIndex();
        return repairIndexIds(false);
    }
    auto saved = services_.index.secondCopy();
    if (!saved) {
        const auto copy = readFile(backupRoot() / layout::collectionIndexFile);
        saved = copy ? decode<std::vector<CollectionInfo>>(*copy).optional() : std::nullopt;
    }
    if (!saved)
        return;
    bool found = false;
    for (const auto& record : *saved) {
        if (!services_.storage.loadCollection(record.id))
            continue;
        services_.index.addOrUpdateCollection(record.id, record.name);
        found = true;
    }
    if (found)
        log("⚠️ DataSync: Collection index lost, rebuilt from its copy");
}

// A damaged id leaves a row without data and a folder without a row. They belong together if the
// ids differ in a single byte. After a restore or the loss of changes each folder should be listed,
// so the others are listed again.
void DataSyncManager::repairIndexIds(bool listUnlisted) {
    const auto folders = listCollectionFolders(services_.storage.collectionsFolder());
    if (!folders)
        return;
    const auto rows = services_.index.collections();
    std::vector<std::string> unlisted;
    for (const auto& folder : *folders)
        if (std::none_of(rows.begin(), rows.end(),
                         [&](const auto& row) { return row.id == folder.name; }))
            unlisted.push_back(folder.name);
    std::sort(unlisted.begin(), unlisted.end());
    for (const auto& row : rows) {
        const auto match = std::find_if(unlisted.begin(), unlisted.end(), [&](const auto& folder) {
            return differInOneByte(row.id, folder);
        });
        if (match == unlisted.end() || services_.storage.loadCollection(row.id) ||
            !services_.storage.loadCollection(*match))
            continue;
        services_.index.replaceId(row.id, *match);
        log("⚠️ DataSync: Collection " + row.name + " was listed under a damaged id");
        unlisted.erase(match);
    }
    for (const auto& folder : unlisted)
        if (listUnlisted && services_.storage.loadCollection(folder))
            services_.index.addOrUpdateCollection(folder, lastKnownName(folder));
}

// The name in one of the copies of the index, else the id.
std::string DataSyncManager::lastKnownName(const std::string& collectionId) const {
    auto known = services_.index.secondCopy().value_or(std::vector<CollectionInfo>());
    for (const auto& file :
         {services_.index.indexFile(), backupRoot() / layout::collectionIndexFile}) {
        const auto content = readFile(file);
        const auto rows =
            content ? decode<std::vector<CollectionInfo>>(*content).optional() : std::nullopt;
        if (rows)
            known.insert(known.end(), rows->begin(), rows->end());
    }
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&](const auto& row) { return row.id == collectionId; });
    return found == known.end() ? collectionId : found->name;
}

// Reads values missing in the defaults from the documents. Returns the keys that were filled.
std::vector<std::string> DataSyncManager::fillLostWorkingCopies() {
    std::vector<std::string> filled;
    const auto fill = [&](const std::string& key, const auto& load) {
        if (services_.defaults.data(key))
            return;
        load();
        if (services_.defaults.data(key))
            filled.push_back(key);
    };
    std::error_code failure;
    for (auto entry = fs::directory_iterator(services_.storage.timelinesFolder(), failure);
         !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string id = pathText(entry->path().stem());
        if (entry->path().extension() == layout::recordExtension)
            fill(layout::timelineKey(id), [&] { (void)services_.storage.loadTimeline(id); });
    }
    for (const auto& record : services_.index.collections())
        fill(layout::collectionKey(record.id),
             [&] { (void)services_.storage.loadCollection(record.id); });
    return filled;
}

// A restore of lost defaults has priority over the documents. Values read from documents are
// removed if the backup has a good copy; those of collections also if the backup's index replaces
// the current one.
void DataSyncManager::dropFilledCopies(const std::vector<std::string>& keys) {
    const auto index = readFile(backupRoot() / layout::collectionIndexFile);
    const bool replacesIndex = index && decode<std::vector<CollectionInfo>>(*index);
    for (const auto& key : keys) {
        bool saved = false;
        if (key.starts_with(layout::timelinePrefix)) {
            const std::string id = key.substr(std::string(layout::timelinePrefix).size());
            saved = readTimelineDocument(backupTimelinesFolder() /
                                         pathFromText(id + layout::recordExtension))
                        .ok();
        } else {
            const std::string id = key.substr(std::string(layout::collectionPrefix).size());
            saved = replacesIndex || CollectionFiles(savedCollectionFolder(id)).isWhole();
        }
        if (saved)
            services_.defaults.remove(key);
    }
}

std::optional<TimelineLines> DataSyncManager::savedTimeline(const std::string& videoId) {
    auto lines = readTimelineDocument(backupTimelinesFolder() /
                                      pathFromText(videoId + layout::recordExtension))
                     .optional();
    notify(lines ? SafetyNotice::timelineFromBackup : SafetyNotice::timelineUnreadable);
    return lines;
}

fs::path DataSyncManager::savedCollectionFolder(const std::string& id) const {
    return backupRoot() / layout::dataFolder / layout::collectionsFolder / pathFromText(id);
}

}  // namespace tembrix
