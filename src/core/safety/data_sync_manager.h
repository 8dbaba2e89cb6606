#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/log.h"
#include "base/result.h"
#include "base/signal.h"

#include "ports/bookmarks.h"
#include "ports/directories.h"
#include "ports/property_list.h"
#include "ports/scheduler.h"
#include "ports/user_defaults.h"

#include "core/background/background_work.h"
#include "core/collections/collections_bookmarks_manager.h"
#include "core/records/annotation_records.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/safety/replaced_data.h"
#include "core/safety/second_copy.h"
#include "core/safety/unfinished_restore.h"
#include "core/storage/deleted_timeline_keeper.h"
#include "core/storage/in_memory_storage_manager.h"
#include "core/storage/saved_copies.h"
#include "core/storage/video_files_manager.h"

namespace tembrix {

// The services that the backup uses.
struct DataSyncServices {
    UserDefaults& defaults;
    InMemoryStorageManager& storage;
    CollectionsBookmarksManager& index;
    Bookmarks& bookmarks;
    PropertyList& propertyLists;
    Scheduler& scheduler;
    Directories directories;
    Log& log;
};

// A problem with the user's data and its solution.
enum class SafetyNotice {
    videoListRepaired,    // the list was damaged; a copy is used
    videoListLost,        // there was no list; a copy is used
    videoListDoubtful,    // the list does not match its checksum, and no copy does
    videoListUnreadable,  // the list was damaged, and there is no copy
    newerCopiesUsed,      // the defaults lost their latest changes; newer copies are used
    restored,             // the data was missing at launch and was restored from the backup
    restoredNewer,        // the backup was newer than the data at launch and replaced it
    restoreFinished,      // a restore that an earlier run did not finish was finished
    restoreIncomplete,    // something could not be restored
    backupFailed,         // something could not be copied to the backup
    damagedKept,          // a value could not be read; another copy is used
    databaseReplaced,     // the database was damaged; its readable values are in a new one
    unsavedUnreadable,    // changes that an earlier run could not store cannot be read
    laterChangesUsed,     // the database was out of reach; changes made meanwhile are used
    timelineFromBackup,   // a timeline could not be read; the backup's is used
    timelineUnreadable,   // no copy of a timeline could be read
};

// Keeps a second copy of all data of the user, one generation, separate from the working data. At
// launch it decides whether the working data must be restored from it and then updates it.
// Operations may run on any thread, one at a time. Failures are logged and do not stop later steps;
// the first one is returned.
//
// A copy that cannot be read never replaces one that can. Data replaced by a restore is moved to a
// separate folder and can be restored from there.
class DataSyncManager final : public DeletedTimelineKeeper, public SavedCopies {
  public:
    static constexpr double backupDelay = 2.0;  // seconds

    explicit DataSyncManager(DataSyncServices services);
    ~DataSyncManager() override;

    // Sets a function that is called on the main thread, in the same turn, after a restore or a
    // deletion has replaced the files and the defaults, so that data in memory is updated.
    void setRestored(std::function<void()> restored) { restored_ = std::move(restored); }
    // Sets a function that is called on the main thread, in the same turn, before the working copy
    // of a timeline is replaced, so that an open project cannot store its state over the new one.
    void setReplacingTimeline(std::function<void(const std::string& videoId)> replacing) {
        replacingTimeline_ = std::move(replacing);
    }
    // Messages for the user, each kind at most once. Main thread only.
    const std::vector<SafetyNotice>& notices() const { return notices_; }
    void dismissNotices();
    // Adds messages for incidents that have none yet.
    void noteIncidents(const DefaultsIncidents& incidents);
    [[nodiscard]] Subscription observeNotices(std::function<void()> observer);

    // Finishes operations interrupted by a crash, also restores, and repairs the list of videos and
    // the collection index. Called once, on the main thread, before other code reads the data.
    void prepare();
    // Returns immediately. `ended` is called on the main thread when the launch work has ended.
    void syncOnLaunch(std::function<void()> ended = {});
    // Writes the second copy of small values in the background after one has changed.
    void keepSecondCopy();
    void scheduleBackup();     // any thread
    void performBackup();      // only if one is pending
    Result<void> backUpNow();  // flushes and backs up, even if no backup is pending
    Result<void> restoreFromBackup();
    Result<void> deleteAllData();
    void deleteBackupTimelines();
    Result<void> saveTimelineBeforeDeletion(const VideosData& video,
                                            const TimelineLines& timelines) override;

    // The states that restores have replaced, the newest first.
    std::vector<ReplacedData::State> replacedStates() const { return replaced_.states(); }
    // Restores such a state; its timelines and collections also replace the working copies. The
    // data that it replaces is kept as well.
    Result<void> bringBack(const std::string& replacedState);

    std::optional<TimelineLines> savedTimeline(const std::string& videoId) override;
    std::filesystem::path savedCollectionFolder(const std::string& id) const override;
    void noteDamage() override { notify(SafetyNotice::damagedKept); }

    std::filesystem::path backupRoot() const;
    std::filesystem::path backupTimelinesFolder() const;
    std::filesystem::path documentsFolder() const;

  private:
    void repairAtLaunch();
    void finishInterrupted(const std::filesystem::path& kept) const;
    void runLaunchWork(bool hadData);
    void repairVideoList();
    void recoverIndex();
    void repairIndexIds(bool listUnlisted);
    std::string lastKnownName(const std::string& collectionId) const;
    bool indexReads() const;
    std::vector<std::string> fillLostWorkingCopies();
    void dropFilledCopies(const std::vector<std::string>& keys);
    std::optional<std::map<std::string, Bytes>> savedDefaults(
        const std::filesystem::path& root) const;
    std::optional<Bytes> savedVideoList() const;
    std::optional<double> backupMoment() const;
    void replaceDefaults(const std::function<void()>& replace);
    bool hasData() const;
    bool backupIsNewer() const;
    void makeBackupFolders() const;
    Result<void> backUp();
    Result<void> backupCollections();
    void removeDeletedCollections(const std::vector<CollectionInfo>& records);
    Result<void> backupPlayFields();
    Result<void> backupTimelines(const std::filesystem::path& kept);
    Result<bool> backupTimeline(const VideosData& video, const std::filesystem::path& kept);
    Result<void> keepBetterRecord(const std::string& videoId, const TimelineLines& lines,
                                  const std::filesystem::path& kept);
    Result<void> backupCollectionsBookmarks();
    Result<void> backupUserDefaults(const std::filesystem::path& kept);
    void keepSavedVideos(std::map<std::string, Bytes>& values, const std::filesystem::path& kept);

    Result<void> restoreByHand(const std::string& replacedState);
    void finishRestore(const UnfinishedRestore::Restore& restore);
    Result<void> runRestore(const UnfinishedRestore::Restore& restore);
    Result<void> restoreFrom(const std::filesystem::path& root, const std::filesystem::path& kept,
                             const std::function<Result<void>()>& beforeDefaults = {});
    // Each returns whether the item was there to be restored.
    Result<bool> restoreCollections(const std::filesystem::path& root,
                                    const std::filesystem::path& kept);
    Result<bool> restorePlayFields(const std::filesystem::path& root,
                                   const std::filesystem::path& kept);
    Result<bool> restoreTimelines(const std::filesystem::path& root,
                                  const std::filesystem::path& kept);
    Result<bool> restoreIndex(const std::filesystem::path& root, const std::filesystem::path& kept);
    Result<bool> restoreUserDefaults(const std::filesystem::path& root,
                                     const std::filesystem::path& kept);
    Result<void> replaceDefaultsBy(const std::map<std::string, Bytes>& values,
                                   const std::filesystem::path& kept);
    Result<void> putInForce(const std::filesystem::path& source, const std::filesystem::path& kept);
    Result<void> putTimelineInForce(const std::filesystem::path& document,
                                    const std::filesystem::path& kept);
    Result<void> putCollectionInForce(const std::string& id, const std::filesystem::path& folder,
                                      const std::filesystem::path& kept);
    Result<bool> logged(const Result<void>& outcome, const std::string& success,
                        const std::string& failure) const;
    OrphanedTimeline recordOf(const VideosData& video, TimelineLines lines) const;
    Result<void> writeRecord(const OrphanedTimeline& record) const;
    void noteBackup();
    void noteRestoredBackup();
    void notify(SafetyNotice notice);
    void withdraw(SafetyNotice notice);
    void log(const std::string& line) const { services_.log.line(line); }

    DataSyncServices services_;
    ReplacedData replaced_;
    UnfinishedRestore unfinished_;
    bool preparing_ = false;  // nothing is in memory yet that would have to follow a restore
    SecondCopy secondCopy_;
    std::function<void()> restored_;
    std::function<void(const std::string&)> replacingTimeline_;
    std::vector<SafetyNotice> notices_;
    DefaultsIncidents noted_;  // incidents that have messages
    Signal<> noticesChanged_;
    std::mutex operation_;  // held during each operation
    std::mutex records_;    // held from reading a timeline until its record is written
    std::atomic<bool> pendingBackup_ = false;
    std::unique_ptr<Timer> backupTimer_;  // main thread only
    BackgroundWork work_;
};

}  // namespace tembrix
