// Restores the working data from the backup or from data that an earlier restore replaced, and
// deletes all data.

#include <map>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/files.h"
#include "base/result.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/folder_copy.h"
#include "core/safety/timeline_document.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"
#include "core/storage/video_list_store.h"

namespace tembrix {

namespace fs = std::filesystem;

namespace {

// Calls `visit` for each entry of a folder.
template <class Visit>
Result<void> forEachEntry(const fs::path& folder, const Visit& visit) {
    std::error_code failure;
    Result<void> outcome;
    for (auto entry = fs::directory_iterator(folder, failure);
         outcome && !failure && entry != fs::directory_iterator(); entry.increment(failure))
        outcome = visit(*entry);
    if (outcome && failure)
        return Error{"file", failure.value(), failure.message()};
    return outcome;
}

// Creates a folder next to the target, fills it with `fill` and replaces the target by it. The old
// content is moved to `kept`.
template <class Fill>
Result<void> replaceFolder(const fs::path& target, const fs::path& kept, const Fill& fill) {
    finishReplacing(target, kept);
    const fs::path staging = stagingPlace(target);
    Result<void> outcome = makeFolder(staging);
    if (outcome)
        outcome = fill(staging);
    if (outcome)
        outcome = syncTree(staging);
    if (outcome)
        outcome = moveIntoPlace(staging, target, kept);
    if (!outcome) {
        std::error_code ignored;
        fs::remove_all(staging, ignored);
    }
    return outcome;
}

}  // namespace

void DataSyncManager::restoreFromBackup() {
    const std::lock_guard lock(operation_);
    services_.storage.flushNow();  // so that the newest state of the documents is kept
    const auto still = services_.storage.holdFlush();
    restoreFrom(backupRoot(), replaced_.begin());
}

void DataSyncManager::restoreFrom(const fs::path& root, const fs::path& kept,
                                  const std::function<void()>& beforeDefaults) {
    log("📥 DataSync: Restoring data from backup");
    services_.storage.forgetWritten();
    restoreCollections(root, kept);
    restorePlayFields(root, kept);
    restoreTimelines(root, kept);
    restoreIndex(root, kept);
    if (beforeDefaults)
        beforeDefaults();
    repairIndexIds(true);
    restoreUserDefaults(root, kept);
    replaced_.finish();
    services_.index.cleanUpDuplicateCollections();
    (void)services_.index.collections();
    log("✅ DataSync: Collections loaded from CollectionsBookmarks.json");
    log("✅ DataSync: Data restored from backup");
}

// Folders in the backup that cannot be read do not replace existing ones.
void DataSyncManager::restoreCollections(const fs::path& root, const fs::path& kept) {
    const fs::path source = root / layout::dataFolder / layout::collectionsFolder;
    if (!holdsSomething(source)) {  // the folders themselves always exist
        log("⚠️ DataSync: Collections backup not found");
        return;
    }
    const fs::path target = services_.storage.collectionsFolder();
    const auto outcome = replaceFolder(
        target, kept / layout::dataFolder / layout::collectionsFolder, [&](const fs::path& made) {
            return forEachEntry(source, [&](const fs::directory_entry& entry) -> Result<void> {
                std::error_code ignored;
                const fs::path name = entry.path().filename();
                if (!entry.is_directory(ignored) || entry.is_symlink(ignored))
                    return {};
                const bool useWorking =
                    !CollectionFiles(entry.path()).isWhole() && isThere(target / name);
                if (useWorking)
                    log("⚠️ DataSync: Collection not restored, its copy cannot be read: " +
                        pathText(name));
                return copyInto(useWorking ? target / name : entry.path(), made / name);
            });
        });
    if (outcome)
        log("✅ DataSync: Collections restored from backup");
    else
        log("❌ DataSync: Error restoring collections - " + outcome.error().text);
}

void DataSyncManager::restorePlayFields(const fs::path& root, const fs::path& kept) {
    const fs::path folder = fs::path(layout::dataFolder) / layout::playFieldsFolder;
    if (!holdsSomething(root / folder)) {
        log("⚠️ DataSync: PlayFields backup not found");
        return;
    }
    if (const auto copied =
            replaceByCopy(root / folder, documentsFolder() / layout::playFieldsFolder,
                          CopyOf::folder, kept / folder);
        copied)
        log("✅ DataSync: PlayFields restored from backup");
    else
        log("❌ DataSync: Error restoring PlayFields - " + copied.error().text);
}

// The backup contains one record per video, the working folder plain timeline documents. A record
// that cannot be read does not replace a document.
void DataSyncManager::restoreTimelines(const fs::path& root, const fs::path& kept) {
    const fs::path source = root / layout::timelinesFolder;
    if (!holdsSomething(source)) {
        log("⚠️ DataSync: Timelines backup not found");
        return;
    }
    const fs::path target = services_.storage.timelinesFolder();
    const auto outcome =
        replaceFolder(target, kept / layout::timelinesFolder, [&](const fs::path& made) {
            return forEachEntry(source, [&](const fs::directory_entry& entry) -> Result<void> {
                const fs::path name = entry.path().filename();
                if (name.extension() != layout::recordExtension)
                    return {};
                const auto lines = readTimelineDocument(entry.path());
                const auto document = lines ? encode(*lines) : Result<Bytes>(lines.error());
                if (document)
                    return replaceFile(made / name, *document);
                log("❌ DataSync: Error restoring timelines - " + document.error().text);
                return isThere(target / name) ? copyInto(target / name, made / name)
                                              : Result<void>();
            });
        });
    if (outcome)
        log("✅ DataSync: Timelines restored from backup");
    else
        log("❌ DataSync: Error restoring timelines - " + outcome.error().text);
}

// An index that cannot be read does not replace the current one.
void DataSyncManager::restoreIndex(const fs::path& root, const fs::path& kept) {
    const fs::path source = root / layout::collectionIndexFile;
    if (!isThere(source)) {
        log("⚠️ DataSync: CollectionsBookmarks.json not found in backup");
        return;
    }
    const auto file = readFile(source);
    const auto list = file ? decode<std::vector<CollectionInfo>>(*file)
                           : Result<std::vector<CollectionInfo>>(file.error());
    const auto copied = list ? services_.index.replaceIndexFile([&] {
        return replaceByCopy(source, services_.index.indexFile(), CopyOf::file,
                             kept / layout::collectionIndexFile);
    })
                             : Result<void>(list.error());
    if (copied)
        log("✅ DataSync: CollectionsBookmarks.json restored from backup");
    else
        log("❌ DataSync: Error restoring CollectionsBookmarks.json - " + copied.error().text);
}

void DataSyncManager::restoreUserDefaults(const fs::path& root, const fs::path& kept) {
    std::map<std::string, Bytes> values;
    std::string outcome = "⚠️ DataSync: UserDefaults backup not found";
    const fs::path file = root / layout::defaultsBackupFile;
    if (isThere(file)) {
        const auto bytes = readFile(file);
        auto list = bytes ? services_.propertyLists.decode(*bytes)
                          : Result<std::map<std::string, Bytes>>(bytes.error());
        outcome = list ? "✅ DataSync: UserDefaults restored from backup"
                       : "❌ DataSync: Error restoring UserDefaults - " + list.error().text;
        if (list)
            values = std::move(list).value();
    }
    const auto videos = values.find(layout::videosDataKey);
    if (videos != values.end() && !decode<std::vector<VideosData>>(videos->second)) {
        outcome = "❌ DataSync: Error restoring UserDefaults - the list of videos is damaged";
        values.erase(videos);
    }
    replaceDefaults([&] {
        std::map<std::string, Bytes> before;
        for (const char* key : {layout::videosDataKey, layout::collectionsBookmarksKey}) {
            const auto found = values.find(key);
            if (found == values.end())
                continue;
            if (auto present = services_.defaults.data(key); present && *present != found->second)
                before[key] = std::move(*present);
            if (std::string_view(key) == layout::videosDataKey)
                storeVideoList(services_.defaults, found->second);
            else
                services_.defaults.setData(key, found->second);
        }
        const auto list = services_.propertyLists.encode(before);
        if (!before.empty() && list && makeFolder(kept))
            (void)replaceFile(kept / layout::defaultsBackupFile, *list);
    });
    log(outcome);
}

void DataSyncManager::bringBack(const std::string& replacedState) {
    const fs::path source = replaced_.folder(replacedState);
    if (!isFileName(replacedState) || !isThere(source))
        return;
    const std::lock_guard lock(operation_);
    services_.storage.flushNow();
    const auto still = services_.storage.holdFlush();
    const fs::path kept = replaced_.begin();
    restoreFrom(source, kept, [&] {
        (void)forEachEntry(source / layout::timelinesFolder, [&](const fs::directory_entry& entry) {
            putTimelineInForce(entry.path(), kept);
            return Result<void>();
        });
        (void)forEachEntry(source / layout::dataFolder / layout::collectionsFolder,
                           [&](const fs::directory_entry& entry) {
                               putCollectionInForce(pathText(entry.path().filename()), entry.path(),
                                                    kept);
                               return Result<void>();
                           });
    });
}

// The document has already been replaced. The working copy, which has priority over it, is moved to
// the kept state, including whatever was marked until the turn in which it is replaced.
void DataSyncManager::putTimelineInForce(const fs::path& document, const fs::path& kept) {
    if (document.extension() != layout::recordExtension || !readTimelineDocument(document))
        return;
    const std::string id = pathText(document.stem());
    const std::string key = layout::timelineKey(id);
    for (bool replaced = false; !replaced;) {
        const auto working = services_.defaults.data(key);
        if (working && decode<TimelineLines>(*working)) {
            const fs::path folder = kept / layout::timelinesFolder;
            if (!makeFolder(folder) || !replaceFile(folder / document.filename(), *working))
                return;
        }
        services_.scheduler.onMainAndWait([&] {
            replaced = services_.defaults.data(key) == working;
            if (!replaced)
                return;
            if (replacingTimeline_)
                replacingTimeline_(id);
            services_.defaults.remove(key);
        });
    }
    (void)services_.storage.loadTimeline(id);
}

void DataSyncManager::putCollectionInForce(const std::string& id, const fs::path& folder,
                                           const fs::path& kept) {
    const CollectionFiles files(folder);
    if (!files.isWhole())
        return;
    const auto value = services_.defaults.data(layout::collectionKey(id));
    const auto working = value ? decode<CollectionData>(*value).optional() : std::nullopt;
    const fs::path place = kept / layout::dataFolder / layout::collectionsFolder;
    if (working && working != files.collection(id) &&
        !writeCollectionFiles(place / pathFromText(id), *working))
        return;
    services_.defaults.remove(layout::collectionKey(id));
    (void)services_.storage.loadCollection(id);
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
    replaced_.removeAll();
    if (isThere(backupRoot())) {
        fs::remove_all(backupRoot(), ignored);
        log("✅ DataSync: Backup deleted from Application Support");
    }
    replaceDefaults([&] {
        for (const char* key : {layout::videosDataKey, layout::videosCheckKey,
                                layout::collectionsBookmarksKey, layout::lastSyncDateKey})
            services_.defaults.remove(key);
        log("✅ DataSync: UserDefaults cleared");
        (void)services_.index.replaceIndexFile([&]() -> Result<void> {
            if (fs::remove(services_.index.indexFile(), ignored))
                log("✅ DataSync: CollectionsBookmarks.json cleared");
            return {};
        });
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
