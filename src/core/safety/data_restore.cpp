// The way back: restoring the working data from the backup, and deleting both.

#include <system_error>
#include <vector>

#include "base/files.h"

#include "core/records/codec.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/folder_copy.h"

namespace tembrix {

namespace fs = std::filesystem;

namespace {

// A backup file as a timeline document, whichever of the two forms it has.
Result<TimelineLines> timelineDocument(const Bytes& file) {
    if (auto record = decode<OrphanedTimeline>(file))
        return record->timelines;
    return decode<TimelineLines>(file);
}

}  // namespace

void DataSyncManager::restoreFromBackup() {
    {
        const std::lock_guard lock(operation_);
        const auto still = services_.storage.holdFlush();
        log("📥 DataSync: Restoring data from backup");
        restoreItem(backupRoot() / "Tembrix-Stat/Collections", documentsFolder() / "Collections",
                    "Collections");
        restoreItem(backupRoot() / "Tembrix-Stat/PlayFields", documentsFolder() / "PlayFields",
                    "PlayFields");
        restoreTimelines();
        const fs::path index = backupRoot() / "CollectionsBookmarks.json";
        if (!isThere(index))
            log("⚠️ DataSync: CollectionsBookmarks.json not found in backup");
        else if (restoreItem(index, services_.index.indexFile(), "CollectionsBookmarks.json"))
            services_.index.rereadIndex();
        restoreUserDefaults();
        services_.index.cleanUpDuplicateCollections();
        (void)services_.index.collections();
        log("✅ DataSync: Collections loaded from CollectionsBookmarks.json");
        log("✅ DataSync: Data restored from backup");
    }
    tellRestored();
}

bool DataSyncManager::restoreItem(const fs::path& backup, const fs::path& target,
                                  const std::string& name) {
    const std::string inFailure = name == "Collections" ? "collections" : name;
    if (!holdsSomething(backup)) {  // the folders themselves are always made
        log("⚠️ DataSync: " + name + " backup not found");
        return false;
    }
    const auto copied = replaceByCopy(backup, target);
    log(copied ? "✅ DataSync: " + name + " restored from backup"
               : "❌ DataSync: Error restoring " + inFailure + " - " + copied.error().text);
    return copied.ok();
}

// The backup holds a record per video; the working folder holds plain timeline documents.
void DataSyncManager::restoreTimelines() {
    const fs::path source = backupTimelinesFolder();
    if (!holdsSomething(source)) {
        log("⚠️ DataSync: Timelines backup not found");
        return;
    }
    const fs::path target = services_.storage.timelinesFolder();
    finishReplacing(target);
    const fs::path staging = stagingPlace(target);
    Result<void> outcome = makeFolder(staging);
    std::error_code failure;
    for (auto entry = fs::directory_iterator(source, failure);
         outcome && !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        if (entry->path().extension() != ".json")
            continue;
        const auto file = readFile(entry->path());
        const auto lines = file ? timelineDocument(*file) : Result<TimelineLines>(file.error());
        const auto document = lines ? encode(*lines) : Result<Bytes>(lines.error());
        if (!document) {
            // One broken record costs itself, not the others.
            log("❌ DataSync: Error restoring timelines - " + document.error().text);
            continue;
        }
        outcome = replaceFile(staging / entry->path().filename(), *document);
    }
    if (failure)
        outcome = Error{"file", failure.value(), failure.message()};
    if (outcome)
        outcome = moveIntoPlace(staging, target);
    if (outcome) {
        log("✅ DataSync: Timelines restored from backup");
        return;
    }
    std::error_code ignored;
    fs::remove_all(staging, ignored);
    log("❌ DataSync: Error restoring timelines - " + outcome.error().text);
}

void DataSyncManager::restoreUserDefaults() {
    const fs::path file = backupRoot() / "UserDefaultsBackup.plist";
    if (!isThere(file)) {
        log("⚠️ DataSync: UserDefaults backup not found");
        return;
    }
    const auto bytes = readFile(file);
    const auto values = bytes ? services_.propertyLists.decode(*bytes)
                              : Result<std::map<std::string, Bytes>>(bytes.error());
    if (!values) {
        log("❌ DataSync: Error restoring UserDefaults - " + values.error().text);
        return;
    }
    for (const char* key : {"videosData", "collectionsBookmarks"}) {
        if (const auto found = values->find(key); found != values->end())
            services_.defaults.setData(key, found->second);
    }
    log("✅ DataSync: UserDefaults restored from backup");
}

void DataSyncManager::deleteAllData() {
    {
        const std::lock_guard lock(operation_);
        log("🗑️ DataSync: Deleting all user data");
        std::error_code ignored;
        for (const char* item : {"Collections", "PlayFields", "Timelines"}) {
            const fs::path folder = documentsFolder() / item;
            if (!isThere(folder))
                continue;
            fs::remove_all(folder, ignored);
            log(std::string("✅ DataSync: ") + item + " deleted from Documents");
        }
        if (isThere(backupRoot())) {
            fs::remove_all(backupRoot(), ignored);
            log("✅ DataSync: Backup deleted from Application Support");
        }
        for (const char* key : {"videosData", "collectionsBookmarks", "DataSync_LastSyncDate"})
            services_.defaults.remove(key);
        log("✅ DataSync: UserDefaults cleared");
        if (isThere(services_.index.indexFile())) {
            fs::remove(services_.index.indexFile(), ignored);
            log("✅ DataSync: CollectionsBookmarks.json cleared");
        }
        services_.index.rereadIndex();
        log("✅ DataSync: All user data deleted");
    }
    tellRestored();
}

void DataSyncManager::deleteBackupTimelines() {
    const std::lock_guard lock(operation_);
    if (!isThere(backupTimelinesFolder()))
        return;
    std::error_code ignored;
    std::filesystem::remove_all(backupTimelinesFolder(), ignored);
    (void)makeFolder(backupTimelinesFolder());
    log("🗑️ DataSync: All timelines deleted from backup");
}

}  // namespace tembrix
