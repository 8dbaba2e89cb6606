#include "core/safety/data_sync_manager.h"

#include <algorithm>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#include "base/date.h"
#include "base/files.h"
#include "base/json_style.h"
#include "base/uuid.h"

#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/safety/folder_copy.h"
#include "core/safety/timeline_document.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace fs = std::filesystem;

DataSyncManager::DataSyncManager(DataSyncServices services)
    : services_(std::move(services)),
      replaced_(services_.storage.dataFolder() / layout::replacedFolder, services_.scheduler),
      secondCopy_(
          services_.directories.applicationSupport / layout::programFolder / layout::secondCopyFile,
          services_.defaults, services_.propertyLists, services_.log),
      work_(services_.scheduler) {
    makeBackupFolders();
}

DataSyncManager::~DataSyncManager() {
    // A restore waits for the main thread. None is running any more, because the program drains the
    // scheduler before it destroys its services.
    work_.cancelAndWait();
}

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

void DataSyncManager::prepare() {
    finishInterrupted();
    if (secondCopy_.repairDefaults())
        notify(SafetyNotice::videoListRepaired);
    repairVideoList();
    recoverIndex();
}

void DataSyncManager::syncOnLaunch(std::function<void()> ended) {
    log("🔄 DataSync: Starting synchronization on app launch");
    // Checked now, because the library stores a list when it is loaded, even an empty one.
    work_.run(
        Priority::utility, [this, hadData = hasData()] { runLaunchWork(hadData); },
        [ended = std::move(ended)] {
            if (ended)
                ended();
        });
}

void DataSyncManager::runLaunchWork(bool hadData) {
    services_.index.cleanUpDuplicateCollections();
    (void)services_.index.collections();
    log("✅ DataSync: Collections loaded from CollectionsBookmarks.json");
    const auto filled = fillLostWorkingCopies();
    bool restores = !hadData;
    if (!hadData) {
        log("📥 DataSync: No data in Documents, restoring from backup");
    } else {
        log("✅ DataSync: Data exists in Documents, checking differences with backup");
        restores = backupIsNewer();
        if (restores)
            log("⚠️ DataSync: Differences found, restoring newer data from backup");
        else
            log("✅ DataSync: Data is identical");
    }
    if (restores) {
        const std::lock_guard lock(operation_);
        const auto still = services_.storage.holdFlush();
        dropFilledCopies(filled);
        const bool replaces = hadData && isThere(backupRoot() / layout::defaultsBackupFile);
        restoreFrom(backupRoot(), replaced_.begin());
        if (replaces)
            notify(SafetyNotice::restored);
    }
    scheduleBackup();
}

void DataSyncManager::notify(SafetyNotice notice) {
    work_.onMain([this, notice] {
        if (std::find(notices_.begin(), notices_.end(), notice) != notices_.end())
            return;
        notices_.push_back(notice);
        noticesChanged_.emit();
    });
}

void DataSyncManager::dismissNotices() {
    notices_.clear();
    noticesChanged_.emit();
}

Subscription DataSyncManager::observeNotices(std::function<void()> observer) {
    return noticesChanged_.observe(std::move(observer));
}

// The main thread owns the list of videos and saves it as a whole. A replacement is stored and
// loaded in one step there; otherwise the next save would restore the old list.
void DataSyncManager::replaceDefaults(const std::function<void()>& replace) {
    services_.scheduler.onMainAndWait([&] {
        replace();
        if (restored_)
            restored_();
    });
    secondCopy_.write();
}

void DataSyncManager::keepSecondCopy() {
    work_.run(Priority::utility, [this] { secondCopy_.write(); });
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

// The modification time of the property list; absent if it cannot be determined, with errno set.
std::optional<double> DataSyncManager::backupMoment() const {
    struct stat status {};
    if (::stat((backupRoot() / layout::defaultsBackupFile).c_str(), &status) != 0)
        return std::nullopt;
    return static_cast<double>(status.st_mtim.tv_sec) +
           static_cast<double>(status.st_mtim.tv_nsec) * 1e-9;
}

void DataSyncManager::scheduleBackup() {
    pendingBackup_ = true;
    work_.onMain([this] {
        backupTimer_ = services_.scheduler.after(backupDelay, [this] {
            // The timer runs on the main thread. The files are copied in the background, so that no
            // window has to wait.
            work_.run(Priority::utility, [this] { performBackup(); });
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
    // The disk may belong to another machine with a fast clock, or the clock of this one may have
    // been set back. At the next launch, the new backup must not appear to be newer than the data.
    Date moment = services_.scheduler.now();
    moment.secondsSince1970 = std::max(moment.secondsSince1970, backupMoment().value_or(0));
    services_.defaults.setDate(layout::lastSyncDateKey, moment);
    secondCopy_.write();
    log("✅ DataSync: Backup created successfully");
}

void DataSyncManager::backupCollections() {
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
        if (const auto copied = replaceByCopy(folder, copy, CopyOf::folder); copied)
            log("✅ DataSync: Backed up collection: " + record.name);
        else
            log(failed + copied.error().text);
    }
    log("✅ DataSync: Collections backup completed (" + std::to_string(records.size()) +
        " collections)");
}

// A deleted collection is neither listed nor stored. A collection that is stored but not listed may
// be the result of a damaged index.
void DataSyncManager::removeDeletedCollections(const std::vector<CollectionInfo>& records) {
    std::set<std::string> ids;
    for (const auto& record : records)
        ids.insert(record.id);
    // A lost or damaged index lists nothing; the last copies must not be removed because of that.
    const bool known = !records.empty() || indexReads();
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

// Records of videos that were removed from the library are kept, so that their timelines can be
// rescued.
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
    for (const auto& video : *videos)
        written += backupTimeline(video) ? 1 : 0;
    log("✅ DataSync: Video timelines backed up (" + std::to_string(written) + " files)");
}

bool DataSyncManager::backupTimeline(const VideosData& video) {
    const std::lock_guard lock(records_);
    TimelineLines lines = services_.storage.loadTimeline(video.id);
    if (lines.empty() || !isFileName(video.id))
        return false;
    keepBetterRecord(video.id, lines);
    const auto done = writeRecord(recordOf(video, std::move(lines)));
    if (!done)
        log("❌ DataSync: Error backing up timelines - " + done.error().text);
    return done.ok();
}

// After a failed reading a timeline starts empty. If the backup's record contains stamps that the
// timeline lacks, the record is moved to the replaced data before it is overwritten.
void DataSyncManager::keepBetterRecord(const std::string& videoId, const TimelineLines& lines) {
    const std::string mark = layout::unreadableKey(videoId);
    if (!services_.defaults.boolean(mark))
        return;
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
        const fs::path folder = replaced_.begin() / layout::timelinesFolder;
        const auto document = encode(*saved);
        if (!document || !makeFolder(folder) ||
            !replaceFile(folder / pathFromText(videoId + layout::recordExtension), *document))
            return;
        replaced_.finish();
    }
    services_.defaults.remove(mark);
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

// A missing or damaged list of videos does not replace a good one, which may be the last copy. A
// list that was started again because no copy could be read replaces the good one only after that
// was moved to the replaced data.
void DataSyncManager::keepSavedVideos(std::map<std::string, Bytes>& values) {
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
    const fs::path kept = replaced_.begin();
    if (!replaceByCopy(backupRoot() / layout::defaultsBackupFile, kept / layout::defaultsBackupFile,
                       CopyOf::file)) {
        values[layout::videosDataKey] = *saved;
        return;
    }
    replaced_.finish();
    services_.defaults.remove(mark);
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
