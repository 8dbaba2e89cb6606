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
    videoListDoubtful,    // the list does not match its checksum, and no copy does
    videoListUnreadable,  // the list was damaged, and there is no copy
    restored,             // the data was restored from the backup at launch
    timelineFromBackup,   // a timeline could not be read; the backup's is used
    timelineUnreadable,   // no copy of a timeline could be read
};

// Keeps a second copy of all data of the user, one generation, separate from the working data. At
// launch it decides whether the working data must be restored from it and then updates it.
// Operations may run on any thread, one at a time. Failures are logged and do not stop later steps.
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
    [[nodiscard]] Subscription observeNotices(std::function<void()> observer);

    // Finishes operations interrupted by a crash and repairs the list of videos and the collection
    // index. Called once, on the main thread, before other code reads the data.
    void prepare();
    // Returns immediately. `ended` is called on the main thread when the launch work has ended.
    void syncOnLaunch(std::function<void()> ended = {});
    // Writes the second copy of small values in the background after one has changed.
    void keepSecondCopy();
    void scheduleBackup();  // any thread
    void performBackup();   // only if one is pending
    void backUpNow();       // flushes and backs up, even if no backup is pending
    void restoreFromBackup();
    void deleteAllData();
    void deleteBackupTimelines();
    Result<void> saveTimelineBeforeDeletion(const VideosData& video,
                                            const TimelineLines& timelines) override;

    // The states that restores have replaced, the newest first.
    std::vector<ReplacedData::State> replacedStates() const { return replaced_.states(); }
    // Restores such a state; its timelines and collections also replace the working copies. The
    // data that it replaces is kept as well.
    void bringBack(const std::string& replacedState);

    std::optional<TimelineLines> savedTimeline(const std::string& videoId) override;
    std::filesystem::path savedCollectionFolder(const std::string& id) const override;

    std::filesystem::path backupRoot() const;
    std::filesystem::path backupTimelinesFolder() const;
    std::filesystem::path documentsFolder() const;

  private:
    void finishInterrupted() const;
    void runLaunchWork(bool hadData);
    void repairVideoList();
    void recoverIndex();
    void repairIndexIds(bool listUnlisted);
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
    void backUp();
    void backupCollections();
    void removeDeletedCollections(const std::vector<CollectionInfo>& records);
    void backupPlayFields();
    void backupTimelines();
    bool backupTimeline(const VideosData& video);
    void keepBetterRecord(const std::string& videoId, const TimelineLines& lines);
    void backupCollectionsBookmarks();
    void backupUserDefaults();
    void keepSavedVideos(std::map<std::string, Bytes>& values);
    void restoreFrom(const std::filesystem::path& root, const std::filesystem::path& kept,
                     const std::function<void()>& beforeDefaults = {});
    void restoreCollections(const std::filesystem::path& root, const std::filesystem::path& kept);
    void restorePlayFields(const std::filesystem::path& root, const std::filesystem::path& kept);
    void restoreTimelines(const std::filesystem::path& root, const std::filesystem::path& kept);
    void restoreIndex(const std::filesystem::path& root, const std::filesystem::path& kept);
    void restoreUserDefaults(const std::filesystem::path& root, const std::filesystem::path& kept);
    void putTimelineInForce(const std::filesystem::path& document,
                            const std::filesystem::path& kept);
    void putCollectionInForce(const std::string& id, const std::filesystem::path& folder,
                              const std::filesystem::path& kept);
    OrphanedTimeline recordOf(const VideosData& video, TimelineLines lines) const;
    Result<void> writeRecord(const OrphanedTimeline& record) const;
    void notify(SafetyNotice notice);
    void log(const std::string& line) const { services_.log.line(line); }

    DataSyncServices services_;
    ReplacedData replaced_;
    SecondCopy secondCopy_;
    std::function<void()> restored_;
    std::function<void(const std::string&)> replacingTimeline_;
    std::vector<SafetyNotice> notices_;
    Signal<> noticesChanged_;
    std::mutex operation_;  // held during each operation
    std::mutex records_;    // held from reading a timeline until its record is written
    std::atomic<bool> pendingBackup_ = false;
    std::unique_ptr<Timer> backupTimer_;  // main thread only
    BackgroundWork work_;
};

}  // namespace tembrix
