// The way back: restoring the working data from the backup, and deleting both.

#include <map>
#include <system_error>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/files.h"
#include "base/result.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/timeline_records.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/folder_copy.h"
#include "core/storage/data_layout.h"

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
    const std::lock_guard lock(operation_);
    const auto still = services_.storage.holdFlush();
    log("📥 DataSync: Restoring data from backup");
    services_.storage.forgetWritten();
    restoreFolder(layout::collectionsFolder);
    restoreFolder(layout::playFieldsFolder);
    restoreTimelines();
    restoreIndex();
    restoreUserDefaults();
    services_.index.cleanUpDuplicateCollections();
    (void)services_.index.collections();
    log("✅ DataSync: Collections loaded from CollectionsBookmarks.json");
    log("✅ DataSync: Data restored from backup");
}

void DataSyncManager::restoreFolder(const std::string& name) {
    const fs::path source = backupRoot() / layout::dataFolder / name;
    if (!holdsSomething(source)) {  // the folders themselves are always made
        log("⚠️ DataSync: " + name + " backup not found");
        return;
    }
    if (const auto copied = replaceByCopy(source, documentsFolder() / name, CopyOf::folder); copied)
        log("✅ DataSync: " + name + " restored from backup");
    else
        log("❌ DataSync: Error restoring " +
            (name == layout::collectionsFolder ? "collections" : name) + " - " +
            copied.error().text);
}

// One that cannot be read must not replace the names that are here.
void DataSyncManager::restoreIndex() {
    const fs::path source = backupRoot() / layout::collectionIndexFile;
    if (!isThere(source)) {
        log("⚠️ DataSync: CollectionsBookmarks.json not found in backup");
        return;
    }
    const auto file = readFile(source);
    const auto list = file ? decode<std::vector<CollectionInfo>>(*file)
                           : Result<std::vector<CollectionInfo>>(file.error());
    const auto copied = list ? replaceByCopy(source, services_.index.indexFile(), CopyOf::file)
                             : Result<void>(list.error());
    if (!copied) {
        log("❌ DataSync: Error restoring CollectionsBookmarks.json - " + copied.error().text);
        return;
    }
    services_.index.rereadIndex();
    log("✅ DataSync: CollectionsBookmarks.json restored from backup");
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
        if (entry->path().extension() != layout::recordExtension)
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
    std::map<std::string, Bytes> values;
    std::string outcome = "⚠️ DataSync: UserDefaults backup not found";
    const fs::path file = backupRoot() / layout::defaultsBackupFile;
    if (isThere(file)) {
        const auto bytes = readFile(file);
        auto list = bytes ? services_.propertyLists.decode(*bytes)
                          : Result<std::map<std::string, Bytes>>(bytes.error());
        outcome = list ? "✅ DataSync: UserDefaults restored from backup"
                       : "❌ DataSync: Error restoring UserDefaults - " + list.error().text;
        if (list)
            values = std::move(list).value();
    }
    replaceDefaults([&] {
        for (const char* key : {layout::videosDataKey, layout::collectionsBookmarksKey}) {
            if (const auto found = values.find(key); found != values.end())
                services_.defaults.setData(key, found->second);
        }
    });
    log(outcome);
}

void DataSyncManager::deleteAllData() {
    const std::lock_guard lock(operation_);
    const auto still = services_.storage.holdFlush();
    log("🗑️ DataSync: Deleting all user data");
    std::error_code ignored;
    for (const char* item :
         {layout::collectionsFolder, layout::playFieldsFolder, layout::timelinesFolder}) {
        const fs::path folder = documentsFolder() / item;
        if (!isThere(folder))
            continue;
        fs::remove_all(folder, ignored);
        log(std::string("✅ DataSync: ") + item + " deleted from Documents");
    }
    services_.storage.keepFromDocuments();
    if (isThere(backupRoot())) {
        fs::remove_all(backupRoot(), ignored);
        log("✅ DataSync: Backup deleted from Application Support");
    }
    replaceDefaults([&] {
        for (const char* key :
             {layout::videosDataKey, layout::collectionsBookmarksKey, layout::lastSyncDateKey})
            services_.defaults.remove(key);
        log("✅ DataSync: UserDefaults cleared");
        if (fs::remove(services_.index.indexFile(), ignored))
            log("✅ DataSync: CollectionsBookmarks.json cleared");
        services_.index.rereadIndex();
    });
    log("✅ DataSync: All user data deleted");
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
