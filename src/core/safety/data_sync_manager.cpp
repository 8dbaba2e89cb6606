#include "core/safety/data_sync_manager.h"

#include <algorithm>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "base/date.h"
#include "base/files.h"
#include "base/json_style.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/safety/folder_copy.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace fs = std::filesystem;

DataSyncManager::DataSyncManager(DataSyncServices services) : services_(std::move(services)) {
    finishInterrupted();  // before anything reads the data
    makeBackupFolders();
    recoverIndex();
}

DataSyncManager::~DataSyncManager() = default;

fs::path DataSyncManager::backupRoot() const {
    return services_.directories.applicationSupport / layout::backupFolder;
}

fs::path DataSyncManager::backupTimelinesFolder() const {
    return backupRoot() / layout::timelinesFolder;
}

fs::path DataSyncManager::documentsFolder() const {
    return services_.storage.dataFolder();
}

void DataSyncManager::makeBackupFolders() const {
    for (const auto& folder :
         {backupRoot(), backupRoot() / layout::dataFolder / layout::collectionsFolder,
          backupRoot() / layout::dataFolder / layout::playFieldsFolder, backupTimelinesFolder()})
        (void)makeFolder(folder);
}

void DataSyncManager::finishInterrupted() const {
    const fs::path copies = backupRoot() / layout::dataFolder;
    for (const auto& folder :
         {documentsFolder(), backupRoot(), copies, copies / layout::collectionsFolder})
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

void DataSyncManager::syncOnLaunch() {
    log("🔄 DataSync: Starting synchronization on app launch");
    // Asked now: the library stores a list of its own as soon as it comes up, even an empty one.
    services_.scheduler.background(Priority::utility,
                                   [this, hadData = hasData(), weak = std::weak_ptr(alive_)] {
                                       if (const auto alive = weak.lock())
                                           runLaunchWork(hadData);
                                   });
}

void DataSyncManager::runLaunchWork(bool hadData) {
    services_.index.cleanUpDuplicateCollections();
    (void)services_.index.collections();
    log("✅ DataSync: Collections loaded from CollectionsBookmarks.json");
    if (!hadData) {
        log("📥 DataSync: No data in Documents, restoring from backup");
        restoreFromBackup();
    } else {
        log("✅ DataSync: Data exists in Documents, checking differences with backup");
        if (backupIsNewer()) {
            log("⚠️ DataSync: Differences found, restoring newer data from backup");
            restoreFromBackup();
        } else {
            log("✅ DataSync: Data is identical");
        }
    }
    scheduleBackup();
}

// Where the index is lost or broken, the collections that are still here come back under the names
// that the backup knows; before the tag library comes up, so that the chosen one stays chosen.
void DataSyncManager::recoverIndex() {
    if (indexReads() || !services_.index.collections().empty())
        return;
    const auto file = readFile(backupRoot() / layout::collectionIndexFile);
    const auto saved = file ? decode<std::vector<CollectionInfo>>(*file)
                            : Result<std::vector<CollectionInfo>>(file.error());
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
        log("⚠️ DataSync: Collection index lost, rebuilt from the backup's");
}

bool DataSyncManager::indexReads() const {
    const auto file = readFile(services_.index.indexFile());
    return file && decode<std::vector<CollectionInfo>>(*file);
}

// The main thread owns the list of videos and saves it as a whole: what replaces it from outside
// is stored and taken up in one go, or the next save would bring the old list back.
void DataSyncManager::replaceDefaults(const std::function<void()>& replace) {
    services_.scheduler.onMainAndWait([&] {
        replace();
        if (restored_)
            restored_();
    });
}

bool DataSyncManager::hasData() const {
    return services_.defaults.data(layout::videosDataKey) ||
           services_.defaults.data(layout::collectionsBookmarksKey) ||
           isThere(documentsFolder() / layout::collectionsFolder);
}

bool DataSyncManager::backupIsNewer() const {
    if (!isThere(backupRoot() / layout::defaultsBackupFile))
        return false;
    const auto written = backupMoment();
    if (!written) {
        log("❌ DataSync: Error checking differences - " + std::generic_category().message(errno));
        return false;
    }
    const auto noted = services_.defaults.date(layout::lastSyncDateKey);
    return !noted || *written > noted->secondsSince1970;
}

// When the property list was written; absent if that cannot be told, with errno set.
std::optional<double> DataSyncManager::backupMoment() const {
    struct stat status {};
    if (::stat((backupRoot() / layout::defaultsBackupFile).c_str(), &status) != 0)
        return std::nullopt;
    return static_cast<double>(status.st_mtim.tv_sec) +
           static_cast<double>(status.st_mtim.tv_nsec) * 1e-9;
}

void DataSyncManager::scheduleBackup() {
    pendingBackup_ = true;
    services_.scheduler.onMain([this, weak = std::weak_ptr(alive_)] {
        if (weak.expired())
            return;
        backupTimer_ = services_.scheduler.after(backupDelay, [this, weak] {
            // The timer is the main thread's; the copying is not, so that no window waits for it.
            services_.scheduler.background(Priority::utility, [this, weak] {
                if (const auto alive = weak.lock())
                    performBackup();
            });
        });
    });
}

void DataSyncManager::performBackup() {
    if (pendingBackup_.exchange(false))
        backUp();
}

void DataSyncManager::backUpNow() {
    services_.scheduler.onMainAndWait([this] { backupTimer_.reset(); });
    pendingBackup_ = true;
    performBackup();
}

void DataSyncManager::backUp() {
    const std::lock_guard lock(operation_);
    log("💾 DataSync: Creating data backup");
    services_.storage.flushNow();
    services_.index.flushNow();
    makeBackupFolders();
    {
        const auto still = services_.storage.holdFlush();  // no file changes while it is copied
        backupCollections();
    }
    backupPlayFields();
    backupTimelines();
    backupCollectionsBookmarks();
    backupUserDefaults();
    // The disk may be another machine's, with a clock ahead of this one's, and this one's may have
    // been set back. The backup just made must not look newer than the data at the next launch.
    Date moment = services_.scheduler.now();
    moment.secondsSince1970 = std::max(moment.secondsSince1970, backupMoment().value_or(0));
    services_.defaults.setDate(layout::lastSyncDateKey, moment);
    log("✅ DataSync: Backup created successfully");
}

void DataSyncManager::backupCollections() {
    const auto records = services_.index.collections();
    std::set<std::string> ids;
    for (const auto& record : records)
        ids.insert(record.id);

    const fs::path target = backupRoot() / layout::dataFolder / layout::collectionsFolder;
    (void)makeFolder(target);
    std::error_code failure;
    std::vector<fs::path> gone;
    // An index that is lost or damaged lists nothing, which is no reason to drop the last copies.
    const bool known = !records.empty() || indexReads();
    for (auto entry = fs::directory_iterator(target, failure);
         !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const std::string name = pathText(entry->path().filename());
        std::error_code ignored;
        if (known && !name.starts_with('.') && entry->is_directory(ignored) && !ids.contains(name))
            gone.push_back(entry->path());
    }
    if (failure)
        log("⚠️ DataSync: Error cleaning up backup collections - " + failure.message());
    for (const auto& folder : gone) {
        fs::remove_all(folder, failure);
        log("🗑️ DataSync: Removed deleted collection from backup: " +
            pathText(folder.filename()));
    }

    const fs::path source = documentsFolder() / layout::collectionsFolder;
    if (!isThere(source))
        log("⚠️ DataSync: Collections directory in Documents does not exist");
    for (const auto& record : records) {
        const fs::path folder = source / pathFromText(record.id);
        if (!isFileName(record.id) || !isThere(folder)) {
            log("⚠️ DataSync: Collection folder missing in Documents: " + record.name);
            continue;
        }
        if (const auto copied =
                replaceByCopy(folder, target / pathFromText(record.id), CopyOf::folder);
            copied)
            log("✅ DataSync: Backed up collection: " + record.name);
        else
            log("❌ DataSync: Error backing up collection " + record.name + " - " +
                copied.error().text);
    }
    log("✅ DataSync: Collections backup completed (" + std::to_string(records.size()) +
        " collections)");
}

void DataSyncManager::backupPlayFields() {
    const fs::path source = documentsFolder() / layout::playFieldsFolder;
    if (!isThere(source)) {
        log("⚠️ DataSync: PlayFields directory in Documents does not exist");
        return;
    }
    if (const auto copied = replaceByCopy(
            source, backupRoot() / layout::dataFolder / layout::playFieldsFolder, CopyOf::folder);
        copied)
        log("✅ DataSync: PlayFields backed up");
    else
        log("❌ DataSync: Error backing up PlayFields - " + copied.error().text);
}

// Records of videos that have left the library stay: they are what can be rescued of them.
void DataSyncManager::backupTimelines() {
    const auto data = services_.defaults.data(layout::videosDataKey);
    if (!data) {
        log("⚠️ DataSync: No video data for timeline backup");
        return;
    }
    const auto videos = decode<std::vector<VideosData>>(*data);
    if (!videos) {
        log("❌ DataSync: Error backing up timelines - " + videos.error().text);
        return;
    }
    int written = 0;
    for (const auto& video : *videos) {
        const std::lock_guard lock(records_);
        TimelineLines lines = services_.storage.loadTimeline(video.id);
        if (lines.empty() || !isFileName(video.id))
            continue;
        if (const auto done = writeRecord(recordOf(video, std::move(lines))); done)
            ++written;
        else
            log("❌ DataSync: Error backing up timelines - " + done.error().text);
    }
    log("✅ DataSync: Video timelines backed up (" + std::to_string(written) + " files)");
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

void DataSyncManager::saveTimelineBeforeDeletion(const VideosData& video,
                                                 const TimelineLines& timelines) {
    if (timelines.empty())
        return;
    makeBackupFolders();
    const std::lock_guard lock(records_);
    if (const auto done = writeRecord(recordOf(video, timelines)); done)
        log("💾 DataSync: Video timeline " + video.id + " saved to backup before deletion");
    else
        log("❌ DataSync: Error saving timeline before deletion - " + done.error().text);
}

void DataSyncManager::backupCollectionsBookmarks() {
    const fs::path source = services_.index.indexFile();
    if (!isThere(source)) {
        log("⚠️ DataSync: CollectionsBookmarks.json does not exist");
        return;
    }
    if (!indexReads()) {
        log("❌ DataSync: Error backing up CollectionsBookmarks.json - the file is damaged");
        return;
    }
    if (const auto copied =
            replaceByCopy(source, backupRoot() / layout::collectionIndexFile, CopyOf::file);
        copied)
        log("✅ DataSync: CollectionsBookmarks.json backed up");
    else
        log("❌ DataSync: Error backing up CollectionsBookmarks.json - " + copied.error().text);
}

// A list of videos that is missing or damaged does not take the place of a good one: the copy may
// be the last.
void DataSyncManager::keepSavedVideos(std::map<std::string, Bytes>& values) const {
    const auto current = values.find(layout::videosDataKey);
    if (current != values.end() && decode<std::vector<VideosData>>(current->second))
        return;
    const auto file = readFile(backupRoot() / layout::defaultsBackupFile);
    if (!file)
        return;
    const auto saved = services_.propertyLists.decode(*file);
    if (!saved)
        return;
    if (const auto videos = saved->find(layout::videosDataKey);
        videos != saved->end() && decode<std::vector<VideosData>>(videos->second))
        values[layout::videosDataKey] = videos->second;
}

void DataSyncManager::backupUserDefaults() {
    std::map<std::string, Bytes> values;
    for (const char* key : {layout::videosDataKey, layout::collectionsBookmarksKey}) {
        if (auto data = services_.defaults.data(key))
            values[key] = std::move(*data);
    }
    keepSavedVideos(values);
    const auto list = services_.propertyLists.encode(values);
    const auto done = list ? replaceFile(backupRoot() / layout::defaultsBackupFile, *list)
                           : Result<void>(list.error());
    if (done)
        log("✅ DataSync: UserDefaults backed up");
    else
        log("❌ DataSync: Error saving UserDefaults - " + done.error().text);
}

}  // namespace tembrix
