#include "core/safety/data_sync_manager.h"

#include <algorithm>
#include <optional>
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
      unfinished_(services_.storage.dataFolder() / layout::replacedFolder /
                  layout::unfinishedRestoreFile),
      secondCopy_(
          services_.directories.applicationSupport / layout::programFolder / layout::secondCopyFile,
          services_.defaults, services_.propertyLists, services_.log),
      work_(services_.scheduler) {
    makeBackupFolders();
    services_.index.setWrittenNotice([this] { secondCopy_.write(); });
}

DataSyncManager::~DataSyncManager() {
    // A restore waits for the main thread. None is running any more, because the program drains the
    // scheduler before it destroys its services.
    services_.index.setWrittenNotice({});
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
    preparing_ = true;
    const auto unfinished = unfinished_.find();
    finishInterrupted(replaced_.folder(unfinished ? unfinished->kept : replaced_.begin()));
    repairAtLaunch();
    if (unfinished)
        finishRestore(*unfinished);
    noteIncidents(services_.defaults.status().incidents);
    preparing_ = false;
}

void DataSyncManager::noteIncidents(const DefaultsIncidents& incidents) {
    const auto note = [this](bool happened, bool& noted, SafetyNotice notice) {
        if (happened && !std::exchange(noted, true))
            notify(notice);
    };
    note(incidents.databaseReplaced, noted_.databaseReplaced, SafetyNotice::databaseReplaced);
    note(incidents.recoveryFileDamaged, noted_.recoveryFileDamaged,
         SafetyNotice::unsavedUnreadable);
    note(incidents.valuesSetAside, noted_.valuesSetAside, SafetyNotice::laterChangesUsed);
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
    const RepairScope repair;
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
        const bool isBackup = isThere(backupRoot() / layout::defaultsBackupFile);
        const bool wasNoted = services_.defaults.date(layout::lastSyncDateKey).has_value();
        const auto done = restoreFrom(backupRoot(), replaced_.folder(replaced_.begin()));
        if (done)
            noteRestoredBackup();
        if (isBackup && !done)
            notify(SafetyNotice::restoreIncomplete);
        else if (isBackup && hadData)
            notify(wasNoted ? SafetyNotice::restoredNewer : SafetyNotice::restored);
    }
    scheduleBackup();
}

// What was restored is not restored once more if the next launch comes before the next backup.
void DataSyncManager::noteRestoredBackup() {
    const auto moment = backupMoment();
    if (!moment)
        return;
    services_.defaults.setDate(layout::lastSyncDateKey, Date{*moment});
    secondCopy_.write();
}

void DataSyncManager::withdraw(SafetyNotice notice) {
    work_.onMain([this, notice] {
        if (std::erase(notices_, notice) > 0)
            noticesChanged_.emit();
    });
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
    services_.defaults.remove(layout::videosDoubtKey);
    notices_.clear();
    noticesChanged_.emit();
}

Subscription DataSyncManager::observeNotices(std::function<void()> observer) {
    return noticesChanged_.observe(std::move(observer));
}

// The main thread owns the list of videos and saves it as a whole. A replacement is stored and
// loaded in one step there; otherwise the next save would restore the old list.
void DataSyncManager::replaceDefaults(const std::function<void()>& replace) {
    services_.scheduler.onMainAndWait([&, isRepair = RepairScope::active()] {
        {
            std::optional<RepairScope> repair;
            if (isRepair)
                repair.emplace();
            replace();
        }
        if (restored_ && !preparing_)
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
        (void)backUp();
}

Result<void> DataSyncManager::backUpNow() {
    services_.scheduler.onMainAndWait([this] { backupTimer_.reset(); });
    pendingBackup_ = false;
    return backUp();
}

}  // namespace tembrix
