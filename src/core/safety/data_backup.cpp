// The steps of a backup.

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/date.h"
#include "base/files.h"
#include "base/json_style.h"
#include "base/result.h"
#include "base/uuid.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/safety/data_sync_manager.h"
#include "core/safety/folder_copy.h"
#include "core/safety/timeline_document.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace fs = std::filesystem;

Result<void> DataSyncManager::backUp() {
    const std::lock_guard lock(operation_);
    log("💾 DataSync: Creating data backup");
    services_.storage.flushNow();
    services_.index.flushNow();
    makeBackupFolders();
    const fs::path kept = replaced_.folder(replaced_.begin());
    Result<void> outcome;
    const auto note = [&](Result<void> step) {
        if (outcome && !step)
            outcome = std::move(step);
    };
    {
        const auto still = services_.storage.holdFlush();  // no file changes while it is copied
        note(backupCollections());
    }
    note(backupPlayFields());
    note(backupTimelines(kept));
    note(backupCollectionsBookmarks());
    const auto listWritten = backupUserDefaults(kept);
    note(listWritten);
    if (isThere(kept))
        replaced_.finish();
    if (listWritten)
        noteBackup();
    if (outcome) {
        log("✅ DataSync: Backup created successfully");
        withdraw(SafetyNotice::backupFailed);
    } else {
        log("❌ DataSync: Backup incomplete - " + outcome.error().text);
        notify(SafetyNotice::backupFailed);
    }
    return outcome;
}

// The date belongs to the property list, with which a launch compares it.
void DataSyncManager::noteBackup() {
    // The disk may belong to another machine with a fast clock, or the clock of this one may have
    // been set back. At the next launch, the new backup must not appear to be newer than the data.
    Date moment = services_.scheduler.now();
    moment.secondsSince1970 = std::max(moment.secondsSince1970, backupMoment().value_or(0));
    services_.defaults.setDate(layout::lastSyncDateKey, moment);
    secondCopy_.write();
}

Result<void> DataSyncManager::backupCollections() {
    Result<void> outcome;
    const auto records = services_.index.collections();
    const fs::path target = backupRoot() / layout::dataFolder / layout::collectionsFolder;
    (void)makeFolder(target);
    removeDeletedCollections(records);

    const fs::path source = documentsFolder() / layout::collectionsFolder;
    if (!isThere(source))
        log("⚠️ DataSync: Collections directory in Documents does not exist");
    for (const auto& record : records) {
        const fs::path folder = source / pathFromText(record.id);
        if (!isFileName(record.id) || !isThere(folder)) {
            log("⚠️ DataSync: Collection folder missing in Documents: " + record.name);
            continue;
        }
        const std::string failed = "❌ DataSync: Error backing up collection " + record.name + " - ";
        const fs::path copy = target / pathFromText(record.id);
        if (!CollectionFiles(folder).isWhole() && CollectionFiles(copy).isWhole()) {
            log(failed + "its files cannot be read, the earlier copy is kept");
            continue;
        }
        auto copied = replaceByCopy(folder, copy, CopyOf::folder);
        log(copied ? "✅ DataSync: Backed up collection: " + record.name
                   : failed + copied.error().text);
        if (outcome && !copied)
            outcome = std::move(copied);
    }
    log("✅ DataSync: Collections backup completed (" + std::to_string(records.size()) +
        " collections)");
    return outcome;
}

// A deleted collection is neither listed nor stored. A collection that is stored but not listed may
// be the result of a damaged index.
void DataSyncManager::removeDeletedCollections(const std::vector<CollectionInfo>& records) {
    std::set<std::string> ids;
    for (const auto& record : records)
        ids.insert(record.id);
    // A lost or damaged index lists nothing; the last copies must not be removed because of that.
    const bool known = (!records.empty() || indexReads()) && !services_.storage.hasLostChanges();
    const auto isStored = [this](const std::string& id) {
        return services_.defaults.data(layout::collectionKey(id)) ||
               isThere(services_.storage.collectionsFolder() / pathFromText(id));
    };
    std::error_code failure;
    std::vector<fs::path> gone;
    for (auto entry = fs::directory_iterator(
             backupRoot() / layout::dataFolder / layout::collectionsFolder, failure);
         !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string name = pathText(entry->path().filename());
        std::error_code ignored;
        if (known && !name.starts_with('.') && entry->is_directory(ignored) &&
            !ids.contains(name) && !isStored(name))
            gone.push_back(entry->path());
    }
    if (failure)
        log("⚠️ DataSync: Error cleaning up backup collections - " + failure.message());
    for (const auto& folder : gone) {
        fs::remove_all(folder, failure);
        log("🗑️ DataSync: Removed deleted collection from backup: " +
            pathText(folder.filename()));
    }
}

Result<void> DataSyncManager::backupPlayFields() {
    const fs::path source = documentsFolder() / layout::playFieldsFolder;
    if (!isThere(source)) {
        log("⚠️ DataSync: PlayFields directory in Documents does not exist");
        return {};
    }
    auto copied = replaceByCopy(
        source, backupRoot() / layout::dataFolder / layout::playFieldsFolder, CopyOf::folder);
    log(copied ? "✅ DataSync: PlayFields backed up"
               : "❌ DataSync: Error backing up PlayFields - " + copied.error().text);
    return copied;
}

// Records of videos that were removed from the library are kept, so that their timelines can be
// rescued.
Result<void> DataSyncManager::backupTimelines(const fs::path& kept) {
    const auto data = services_.defaults.data(layout::videosDataKey);
    if (!data) {
        log("⚠️ DataSync: No video data for timeline backup");
        return {};
    }
    const auto videos = decode<std::vector<VideosData>>(*data);
    if (!videos) {
        log("❌ DataSync: Error backing up timelines - " + videos.error().text);
        return videos.error();
    }
    Result<void> outcome;
    int written = 0;
    for (const auto& video : *videos) {
        const auto done = backupTimeline(video, kept);
        written += done && *done ? 1 : 0;
        if (outcome && !done)
            outcome = done.error();
    }
    log("✅ DataSync: Video timelines backed up (" + std::to_string(written) + " files)");
    return outcome;
}

// Returns false for a video without timelines, which has no record.
Result<bool> DataSyncManager::backupTimeline(const VideosData& video, const fs::path& kept) {
    const std::lock_guard lock(records_);
    TimelineLines lines = services_.storage.loadTimeline(video.id);
    if (lines.empty() || !isFileName(video.id))
        return false;
    auto done = keepBetterRecord(video.id, lines, kept);
    if (done)
        done = writeRecord(recordOf(video, std::move(lines)));
    if (done)
        return true;
    log("❌ DataSync: Error backing up timelines - " + done.error().text);
    return done.error();
}

// After a failed reading a timeline starts empty. If the backup's record contains stamps that the
// timeline lacks, the record is moved to the replaced data before it is overwritten.
Result<void> DataSyncManager::keepBetterRecord(const std::string& videoId,
                                               const TimelineLines& lines, const fs::path& kept) {
    const std::string mark = layout::unreadableKey(videoId);
    if (!services_.defaults.boolean(mark))
        return {};
    std::set<Uuid> known;
    for (const auto& line : lines)
        for (const auto& stamp : line->stamps)
            known.insert(stamp->id);
    const auto saved = readTimelineDocument(backupTimelinesFolder() /
                                            pathFromText(videoId + layout::recordExtension));
    bool knowsMore = false;
    if (saved)
        for (const auto& line : *saved)
            for (const auto& stamp : line->stamps)
                knowsMore = knowsMore || !known.contains(stamp->id);
    if (knowsMore) {
        const fs::path folder = kept / layout::timelinesFolder;
        const auto document = encode(*saved);
        auto done = document ? makeFolder(folder) : Result<void>(document.error());
        if (done)
            done = replaceFile(folder / pathFromText(videoId + layout::recordExtension), *document);
        if (!done)
            return done;
    }
    services_.defaults.remove(mark);
    return {};
}

OrphanedTimeline DataSyncManager::recordOf(const VideosData& video, TimelineLines lines) const {
    const auto resolved = services_.bookmarks.resolve(video.bookmark);
    return {
        .videoId = video.id,
        .videoName = resolved ? std::optional(pathText(resolved->path.filename())) : std::nullopt,
        .timelines = std::move(lines),
        .customName = video.customName,
        .isFavorite = video.isFavorite,
        .backupDate = services_.scheduler.now(),
    };
}

Result<void> DataSyncManager::writeRecord(const OrphanedTimeline& record) const {
    const auto bytes = encode(record, JsonStyle::pretty);
    if (!bytes)
        return bytes.error();
    return replaceFile(
        backupTimelinesFolder() / pathFromText(record.videoId + layout::recordExtension), *bytes);
}

Result<void> DataSyncManager::saveTimelineBeforeDeletion(const VideosData& video,
                                                         const TimelineLines& timelines) {
    if (timelines.empty())
        return {};
    makeBackupFolders();
    const std::lock_guard lock(records_);
    const auto done = writeRecord(recordOf(video, timelines));
    if (done)
        log("💾 DataSync: Video timeline " + video.id + " saved to backup before deletion");
    else
        log("❌ DataSync: Error saving timeline before deletion - " + done.error().text);
    return done;
}

Result<void> DataSyncManager::backupCollectionsBookmarks() {
    const fs::path source = services_.index.indexFile();
    if (!isThere(source)) {
        log("⚠️ DataSync: CollectionsBookmarks.json does not exist");
        return {};
    }
    auto copied = indexReads() ? replaceByCopy(source, backupRoot() / layout::collectionIndexFile,
                                               CopyOf::file)
                               : Error{"backup", 0, "the file is damaged"};
    log(copied ? "✅ DataSync: CollectionsBookmarks.json backed up"
               : "❌ DataSync: Error backing up CollectionsBookmarks.json - " + copied.error().text);
    return copied;
}

// A missing or damaged list of videos does not replace a good one, which may be the last copy. A
// list that was started again because no copy could be read replaces the good one only after that
// was moved to the replaced data.
void DataSyncManager::keepSavedVideos(std::map<std::string, Bytes>& values, const fs::path& kept) {
    const auto saved = savedVideoList();
    if (!saved)
        return;
    const auto current = values.find(layout::videosDataKey);
    if (current == values.end() || !decode<std::vector<VideosData>>(current->second)) {
        values[layout::videosDataKey] = *saved;
        return;
    }
    const std::string mark = layout::unreadableKey(layout::videosDataKey);
    if (!services_.defaults.boolean(mark))
        return;
    if (!replaceByCopy(backupRoot() / layout::defaultsBackupFile, kept / layout::defaultsBackupFile,
                       CopyOf::file)) {
        values[layout::videosDataKey] = *saved;
        return;
    }
    services_.defaults.remove(mark);
}

Result<void> DataSyncManager::backupUserDefaults(const fs::path& kept) {
    std::map<std::string, Bytes> values;
    for (const char* key : {layout::videosDataKey, layout::collectionsBookmarksKey}) {
        if (auto data = services_.defaults.data(key))
            values[key] = std::move(*data);
    }
    keepSavedVideos(values, kept);
    const auto list = services_.propertyLists.encode(values);
    auto done = list ? replaceFile(backupRoot() / layout::defaultsBackupFile, *list)
                     : Result<void>(list.error());
    log(done ? "✅ DataSync: UserDefaults backed up"
             : "❌ DataSync: Error saving UserDefaults - " + done.error().text);
    return done;
}

}  // namespace tembrix
