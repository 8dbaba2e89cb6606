#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/log.h"
#include "base/signal.h"

#include "ports/bookmarks.h"
#include "ports/directories.h"
#include "ports/property_list.h"
#include "ports/scheduler.h"
#include "ports/user_defaults.h"

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

// What the backup works with.
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

// Something that went wrong with the user's data, and what was done about it.
enum class SafetyNotice {
    videoListRepaired,    // the list was damaged; the backup's took its place
    videoListUnreadable,  // the list was damaged, and there is no copy of it
    restored,             // at launch the backup replaced the data
    timelineFromBackup,   // a timeline could not be read; the backup's took its place
    timelineUnreadable,   // no copy of a timeline could be read
};

// Keeps a second copy of everything that the user made, one generation, apart from the working
// data. At launch it decides whether the working data has to be restored from it, then refreshes
// it. The operations may run on any thread, one at a time; failures are logged and never stop the
// next step.
//
// A copy that cannot be read never replaces one that can. What a restore replaces is moved into a
// folder of its own and can be brought back.
class DataSyncManager final : public DeletedTimelineKeeper, public SavedCopies {
  public:
    static constexpr double backupDelay = 2.0;  // seconds

    explicit DataSyncManager(DataSyncServices services);
    ~DataSyncManager() override;

    // Called on the main thread in the same turn in which a restore or a deletion replaced the
    // defaults, with the files in place, so that what is in memory follows.
    void setRestored(std::function<void()> restored) { restored_ = std::move(restored); }
    // What the user has to be told, each kind once. Main thread only.
    const std::vector<SafetyNotice>& notices() const { return notices_; }
    void dismissNotices();
    [[nodiscard]] Subscription observeNotices(std::function<void()> observer);

    // Ends what a killed process left half done and repairs the list of videos and the collection
    // index. Called on the main thread, once, before anything else reads the data.
    void prepare();
    // Returns at once. `ended` is called on the main thread when the launch work has ended.
    void syncOnLaunch(std::function<void()> ended = {});
    // Writes the second copy of the small values in the background, because one has changed.
    void keepSecondCopy();
    void scheduleBackup();  // any thread
    void performBackup();   // if one is pending
    void backUpNow();       // flushes, then backs up whether or not one is pending
    void restoreFromBackup();
    void deleteAllData();
    void deleteBackupTimelines();
    void saveTimelineBeforeDeletion(const VideosData& video,
                                    const TimelineLines& timelines) override;

    // The states that restores have replaced, the newest first.
    std::vector<ReplacedData::State> replacedStates() const { return replaced_.states(); }
    // Puts such a state in force again, its timelines and collections also in place of the working
    // copies. What this replaces is kept in turn.
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
    std::vector<SafetyNotice> notices_;
    Signal<> noticesChanged_;
    std::mutex operation_;  // one operation at a time
    std::mutex records_;    // held from reading a timeline to writing its record
    std::atomic<bool> pendingBackup_ = false;
    std::unique_ptr<Timer> backupTimer_;  // main thread only
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
