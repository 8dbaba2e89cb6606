// Restores the working data from the backup or from data that an earlier restore replaced, and
// deletes all data.

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/files.h"
#include "base/result.h"

#include "ports/user_defaults.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/folder_copy.h"
#include "core/safety/timeline_document.h"
#include "core/safety/unfinished_restore.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"
#include "core/storage/deleted_timeline.h"
#include "core/storage/set_aside.h"
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

bool isInLibrary(const UserDefaults& defaults, const std::string& videoId) {
    const auto stored = defaults.data(layout::videosDataKey);
    const auto list = stored ? decode<std::vector<VideosData>>(*stored).optional() : std::nullopt;
    return list && std::any_of(list->begin(), list->end(),
                               [&](const VideosData& video) { return video.id == videoId; });
}

// A deleted video has no working copy. Its newest marks are those that the deletion kept, or those
// of its record in the backup, which the first backup replaces when the video is listed again. They
// are added to the kept state. If that has others, they are set aside.
Result<void> keepDeleted(const DataSyncServices& services, const std::string& videoId,
                         const TimelineLines& replacement, const fs::path& record,
                         const fs::path& kept) {
    std::vector<std::optional<TimelineLines>> copies{deletedTimeline(services.defaults, videoId)};
    if (!isInLibrary(services.defaults, videoId))
        copies.push_back(readTimelineDocument(record).optional());
    for (const auto& copy : copies) {
        if (!copy || *copy == replacement)
            continue;
        const auto document = encode(*copy);
        if (!document)
            return document.error();
        if (isThere(kept)) {
            const auto present = readTimelineDocument(kept);
            if (!present || *present != *copy)
                setAside(services.defaults, services.log, layout::timelineKey(videoId), *document);
            continue;
        }
        auto done = makeFolder(kept.parent_path());
        if (done)
            done = replaceFile(kept, *document);
        if (!done)
            return done;
    }
    return {};
}

}  // namespace

Result<void> DataSyncManager::restoreFromBackup() {
    return restoreByHand({});
}

Result<void> DataSyncManager::bringBack(const std::string& replacedState) {
    if (!isFileName(replacedState) || !isThere(replaced_.folder(replacedState)))
        return Error{"restore", ENOENT, "There is no such state"};
    return restoreByHand(replacedState);
}

Result<void> DataSyncManager::restoreByHand(const std::string& replacedState) {
    const std::lock_guard lock(operation_);
    services_.storage.flushNow();  // so that the newest state of the documents is kept
    const auto still = services_.storage.holdFlush();
    const UnfinishedRestore::Restore restore{replacedState, replaced_.begin()};
    if (auto noted = unfinished_.begin(restore); !noted) {
        log("❌ DataSync: Nothing restored - " + noted.error().text);
        return noted;
    }
    auto outcome = runRestore(restore);
    unfinished_.end();
    return outcome;
}

// A restore repeats without harm: what is in place already is not kept a second time.
void DataSyncManager::finishRestore(const UnfinishedRestore::Restore& restore) {
    log("⚠️ DataSync: A restore was interrupted and is finished now");
    const std::lock_guard lock(operation_);
    const auto still = services_.storage.holdFlush();
    const bool done = runRestore(restore).ok();
    unfinished_.end();
    notify(done ? SafetyNotice::restoreFinished : SafetyNotice::restoreIncomplete);
}

Result<void> DataSyncManager::runRestore(const UnfinishedRestore::Restore& restore) {
    const fs::path kept = replaced_.folder(restore.kept);
    if (restore.source.empty())
        return restoreFrom(backupRoot(), kept);
    const fs::path source = replaced_.folder(restore.source);
    return restoreFrom(source, kept, [&] { return putInForce(source, kept); });
}

// Every item is restored even if an earlier one failed. The first failure is returned; it is also
// one that there was nothing to restore. A state that is brought back is never removed.
Result<void> DataSyncManager::restoreFrom(const fs::path& root, const fs::path& kept,
                                          const std::function<Result<void>()>& beforeDefaults) {
    log("📥 DataSync: Restoring data from backup");
    // Without anything to restore, documents that were deleted are not written again.
    if (holdsSomething(root / layout::timelinesFolder) ||
        holdsSomething(root / layout::dataFolder / layout::collectionsFolder))
        services_.storage.forgetWritten();
    Result<void> outcome;
    bool restored = false;
    const auto note = [&](const Result<bool>& step) {
        restored = restored || (step && *step);
        if (outcome && !step)
            outcome = step.error();
    };
    note(restoreCollections(root, kept));
    note(restorePlayFields(root, kept));
    note(restoreTimelines(root, kept));
    note(restoreIndex(root, kept));
    if (beforeDefaults)
        if (const auto done = beforeDefaults(); !done)
            note(done.error());
    repairIndexIds(true);
    note(restoreUserDefaults(root, kept));
    if (outcome && !restored)
        outcome = Error{"restore", ENOENT, "There is nothing to restore"};
    if (outcome)
        replaced_.finish(pathText(root.filename()));
    services_.index.cleanUpDuplicateCollections();
    (void)services_.index.collections();
    log("✅ DataSync: Collections loaded from CollectionsBookmarks.json");
    log(outcome ? "✅ DataSync: Data restored from backup"
                : "⚠️ DataSync: Not everything restored - " + outcome.error().text);
    return outcome;
}

// Logs a restored item, or why it was not restored.
Result<bool> DataSyncManager::logged(const Result<void>& outcome, const std::string& success,
                                     const std::string& failure) const {
    log(outcome ? success : failure + outcome.error().text);
    return outcome ? Result<bool>(true) : Result<bool>(outcome.error());
}

// Folders in the backup that cannot be read do not replace existing ones.
Result<bool> DataSyncManager::restoreCollections(const fs::path& root, const fs::path& kept) {
    const fs::path source = root / layout::dataFolder / layout::collectionsFolder;
    if (!holdsSomething(source)) {  // the folders themselves always exist
        log("⚠️ DataSync: Collections backup not found");
        return false;
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
    return logged(outcome, "✅ DataSync: Collections restored from backup",
                  "❌ DataSync: Error restoring collections - ");
}

Result<bool> DataSyncManager::restorePlayFields(const fs::path& root, const fs::path& kept) {
    const fs::path folder = fs::path(layout::dataFolder) / layout::playFieldsFolder;
    if (!holdsSomething(root / folder)) {
        log("⚠️ DataSync: PlayFields backup not found");
        return false;
    }
    return logged(replaceByCopy(root / folder, documentsFolder() / layout::playFieldsFolder,
                                CopyOf::folder, kept / folder),
                  "✅ DataSync: PlayFields restored from backup",
                  "❌ DataSync: Error restoring PlayFields - ");
}

// The backup contains one record per video, the working folder plain timeline documents. A record
// that cannot be read does not replace a document.
Result<bool> DataSyncManager::restoreTimelines(const fs::path& root, const fs::path& kept) {
    const fs::path source = root / layout::timelinesFolder;
    if (!holdsSomething(source)) {
        log("⚠️ DataSync: Timelines backup not found");
        return false;
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
    return logged(outcome, "✅ DataSync: Timelines restored from backup",
                  "❌ DataSync: Error restoring timelines - ");
}

// An index that cannot be read does not replace the current one.
Result<bool> DataSyncManager::restoreIndex(const fs::path& root, const fs::path& kept) {
    const fs::path source = root / layout::collectionIndexFile;
    if (!isThere(source)) {
        log("⚠️ DataSync: CollectionsBookmarks.json not found in backup");
        return false;
    }
    const auto file = readFile(source);
    const auto list = file ? decode<std::vector<CollectionInfo>>(*file)
                           : Result<std::vector<CollectionInfo>>(file.error());
    const auto copied = list ? services_.index.replaceIndexFile([&] {
        return replaceByCopy(source, services_.index.indexFile(), CopyOf::file,
                             kept / layout::collectionIndexFile);
    })
                             : Result<void>(list.error());
    return logged(copied, "✅ DataSync: CollectionsBookmarks.json restored from backup",
                  "❌ DataSync: Error restoring CollectionsBookmarks.json - ");
}

Result<bool> DataSyncManager::restoreUserDefaults(const fs::path& root, const fs::path& kept) {
    const std::string failed = "❌ DataSync: Error restoring UserDefaults - ";
    const fs::path file = root / layout::defaultsBackupFile;
    std::map<std::string, Bytes> values;
    Result<bool> outcome = isThere(file);
    if (*outcome) {
        const auto bytes = readFile(file);
        auto list = bytes ? services_.propertyLists.decode(*bytes)
                          : Result<std::map<std::string, Bytes>>(bytes.error());
        if (list)
            values = std::move(list).value();
        else
            outcome = list.error();
    } else {
        log("⚠️ DataSync: UserDefaults backup not found");
    }
    const auto videos = values.find(layout::videosDataKey);
    if (videos != values.end() && !decode<std::vector<VideosData>>(videos->second)) {
        outcome = Error{"restore", 0, "the list of videos is damaged"};
        values.erase(videos);
    }
    replaceDefaults([&] {
        if (const auto replaced = replaceDefaultsBy(values, kept); !replaced)
            outcome = replaced.error();
    });
    if (!outcome)
        log(failed + outcome.error().text);
    else if (*outcome)
        log("✅ DataSync: UserDefaults restored from backup");
    return outcome;
}

// Values that cannot be kept are not replaced.
Result<void> DataSyncManager::replaceDefaultsBy(const std::map<std::string, Bytes>& values,
                                                const fs::path& kept) {
    std::map<std::string, Bytes> before;
    for (const char* key : {layout::videosDataKey, layout::collectionsBookmarksKey}) {
        const auto found = values.find(key);
        auto present = services_.defaults.data(key);
        if (found != values.end() && present && *present != found->second)
            before[key] = std::move(*present);
    }
    if (!before.empty()) {
        const auto list = services_.propertyLists.encode(before);
        auto done = list ? makeFolder(kept) : Result<void>(list.error());
        if (done)
            done = replaceFile(kept / layout::defaultsBackupFile, *list);
        if (!done)
            return done;
    }
    if (const auto list = values.find(layout::videosDataKey); list != values.end())
        storeVideoList(services_.defaults, list->second);
    if (const auto old = values.find(layout::collectionsBookmarksKey); old != values.end())
        services_.defaults.setData(layout::collectionsBookmarksKey, old->second);
    return {};
}

Result<void> DataSyncManager::putInForce(const fs::path& source, const fs::path& kept) {
    Result<void> outcome;
    const auto note = [&](Result<void> step) {
        if (outcome && !step)
            outcome = std::move(step);
        return Result<void>();
    };
    (void)forEachEntry(source / layout::timelinesFolder, [&](const fs::directory_entry& entry) {
        return note(putTimelineInForce(entry.path(), kept));
    });
    (void)forEachEntry(source / layout::dataFolder / layout::collectionsFolder,
                       [&](const fs::directory_entry& entry) {
                           return note(putCollectionInForce(pathText(entry.path().filename()),
                                                            entry.path(), kept));
                       });
    // A deleted video that the state lists without a timeline keeps that of its record.
    const auto values = savedDefaults(source).value_or(std::map<std::string, Bytes>());
    const auto found = values.find(layout::videosDataKey);
    const auto list = found != values.end()
                          ? decode<std::vector<VideosData>>(found->second).optional()
                          : std::nullopt;
    for (const auto& video : list.value_or(std::vector<VideosData>())) {
        const fs::path name = pathFromText(video.id + layout::recordExtension);
        const fs::path document = services_.storage.timelinesFolder() / name;
        if (!isFileName(video.id) || isThere(document) || isInLibrary(services_.defaults, video.id))
            continue;
        const auto lines = readTimelineDocument(backupTimelinesFolder() / name);
        const auto content = lines ? encode(*lines) : Result<Bytes>(lines.error());
        if (!content || services_.defaults.data(layout::timelineKey(video.id)) ||
            deletedTimeline(services_.defaults, video.id))
            continue;
        auto done = makeFolder(document.parent_path());
        (void)note(done ? replaceFile(document, *content) : done);
    }
    return outcome;
}

// The document has already been replaced. The working copy, which has priority over it, is moved to
// the kept state, including whatever was marked until the turn in which it is replaced.
Result<void> DataSyncManager::putTimelineInForce(const fs::path& document, const fs::path& kept) {
    const auto lines = readTimelineDocument(document);
    if (document.extension() != layout::recordExtension || !lines)
        return {};
    const std::string id = pathText(document.stem());
    const std::string key = layout::timelineKey(id);
    for (bool replaced = false; !replaced;) {
        const auto working = services_.defaults.data(key);
        if (working) {
            const auto present = decode<TimelineLines>(*working);
            if (!present) {
                setAside(services_.defaults, services_.log, key, *working);
            } else if (*present != *lines) {
                const fs::path folder = kept / layout::timelinesFolder;
                auto done = makeFolder(folder);
                if (done)
                    done = replaceFile(folder / document.filename(), *working);
                if (!done)
                    return done;
            }
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
    return keepDeleted(services_, id, *lines, backupTimelinesFolder() / document.filename(),
                       kept / layout::timelinesFolder / document.filename());
}

Result<void> DataSyncManager::putCollectionInForce(const std::string& id, const fs::path& folder,
                                                   const fs::path& kept) {
    const CollectionFiles files(folder);
    if (!files.isWhole())
        return {};
    const auto value = services_.defaults.data(layout::collectionKey(id));
    const auto working = value ? decode<CollectionData>(*value).optional() : std::nullopt;
    const fs::path place = kept / layout::dataFolder / layout::collectionsFolder;
    if (value && !working)
        setAside(services_.defaults, services_.log, layout::collectionKey(id), *value);
    if (working && working != files.collection(id))
        if (auto done = writeCollectionFiles(place / pathFromText(id), *working); !done)
            return done;
    services_.defaults.remove(layout::collectionKey(id));
    (void)services_.storage.loadCollection(id);
    return {};
}

Result<void> DataSyncManager::deleteAllData() {
    const std::lock_guard lock(operation_);
    const auto still = services_.storage.holdFlush();
    log("🗑️ DataSync: Deleting all user data");
    std::error_code ignored;
    Result<void> outcome;
    const auto remove = [&](const fs::path& folder, const std::string& success) {
        std::error_code failure;
        fs::remove_all(folder, failure);
        log(failure ? "❌ DataSync: Error deleting " + pathText(folder) + " - " + failure.message()
                    : success);
        if (failure)
            outcome = Error{"file", failure.value(), failure.message()};
    };
    for (const char* item :
         {layout::collectionsFolder, layout::playFieldsFolder, layout::timelinesFolder}) {
        const fs::path folder = documentsFolder() / item;
        if (!isThere(folder))
            continue;
        remove(folder, std::string("✅ DataSync: ") + item + " deleted from Documents");
    }
    services_.storage.keepFromDocuments();
    replaced_.removeAll();
    if (isThere(backupRoot()))
        remove(backupRoot(), "✅ DataSync: Backup deleted from Application Support");
    replaceDefaults([&] {
        for (const char* key : {layout::videosDataKey, layout::videosCheckKey,
                                layout::collectionsBookmarksKey, layout::lastSyncDateKey})
            services_.defaults.remove(key);
        for (const auto& prefix : layout::keysOfVideo({}))
            if (prefix != layout::timelinePrefix)
                for (const auto& key : services_.defaults.keys(prefix))
                    services_.defaults.remove(key);
        log("✅ DataSync: UserDefaults cleared");
        (void)services_.index.replaceIndexFile([&]() -> Result<void> {
            if (fs::remove(services_.index.indexFile(), ignored))
                log("✅ DataSync: CollectionsBookmarks.json cleared");
            return {};
        });
    });
    if (outcome)
        log("✅ DataSync: All user data deleted");
    return outcome;
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
