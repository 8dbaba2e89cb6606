#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/bookmarks.h"
#include "ports/directories.h"
#include "ports/property_list.h"
#include "ports/scheduler.h"
#include "ports/user_defaults.h"

#include "core/collections/collections_bookmarks_manager.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/timeline_records.h"
#include "core/records/video_records.h"
#include "core/storage/deleted_timeline_keeper.h"
#include "core/storage/in_memory_storage_manager.h"
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

// Keeps a second copy of everything that the user made, one generation, apart from the working
// data. At launch it decides whether the working data has to be restored from it, then refreshes
// it. The operations may run on any thread, one at a time; failures are logged and never stop the
// next step.
class DataSyncManager final : public DeletedTimelineKeeper {
  public:
    static constexpr double backupDelay = 2.0;  // seconds

    explicit DataSyncManager(DataSyncServices services);
    ~DataSyncManager() override;

    // Called on the main thread in the same turn in which a restore or a deletion replaced the
    // defaults, with the files in place, so that what is in memory follows.
    void setRestored(std::function<void()> restored) { restored_ = std::move(restored); }

    void syncOnLaunch();    // returns at once
    void scheduleBackup();  // any thread
    void performBackup();   // if one is pending
    void backUpNow();       // flushes, then backs up whether or not one is pending
    void restoreFromBackup();
    void deleteAllData();
    void deleteBackupTimelines();
    void saveTimelineBeforeDeletion(const VideosData& video,
                                    const TimelineLines& timelines) override;

    std::filesystem::path backupRoot() const;
    std::filesystem::path backupTimelinesFolder() const;
    std::filesystem::path documentsFolder() const;

  private:
    void finishInterrupted() const;
    void runLaunchWork(bool hadData);
    void recoverIndex();
    bool indexReads() const;
    std::optional<double> backupMoment() const;
    void replaceDefaults(const std::function<void()>& replace);
    bool hasData() const;
    bool backupIsNewer() const;
    void makeBackupFolders() const;
    void backUp();
    void backupCollections();
    void backupPlayFields();
    void backupTimelines();
    void backupCollectionsBookmarks();
    void backupUserDefaults();
    void keepSavedVideos(std::map<std::string, Bytes>& values) const;
    void restoreFolder(const std::string& name);
    void restoreTimelines();
    void restoreIndex();
    void restoreUserDefaults();
    OrphanedTimeline recordOf(const VideosData& video, TimelineLines lines) const;
    Result<void> writeRecord(const OrphanedTimeline& record) const;
    void log(const std::string& line) const { services_.log.line(line); }

    DataSyncServices services_;
    std::function<void()> restored_;
    std::mutex operation_;  // one operation at a time
    std::mutex records_;    // held from reading a timeline to writing its record
    std::atomic<bool> pendingBackup_ = false;
    std::unique_ptr<Timer> backupTimer_;  // main thread only
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
