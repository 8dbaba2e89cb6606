#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "base/log.h"
#include "base/result.h"

#include "ports/directories.h"
#include "ports/scheduler.h"
#include "ports/user_defaults.h"

#include "core/background/background_work.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"
#include "core/storage/collection_index_storage.h"
#include "core/storage/document_writer.h"
#include "core/storage/edited_line.h"

namespace tembrix {

class SavedCopies;
class TimelineEncoder;

// The store of timelines and collections at two levels. The user defaults contain the working copy,
// which is written on every change. Files in Documents contain the durable copy, which is written
// at most every 30 seconds and at the end. Edits are made on the main thread; flushing runs in the
// background.
class InMemoryStorageManager {
  public:
    static constexpr double saveToDiskInterval = 30.0;

    InMemoryStorageManager(UserDefaults& defaults, Scheduler& scheduler, Directories directories,
                           Log& log);
    ~InMemoryStorageManager();

    // Set when the index has been created. Without an index, a flush does not remove any folders.
    void setCollectionIndex(CollectionIndexStorage* index);

    // Sets where to look for copies that cannot be read here. Set before anything is loaded.
    void setSavedCopies(SavedCopies* copies);

    // Sets a function that is called after each flush, on the thread that flushed, with whether all
    // documents could be written. Those that could not are tried again after the usual delay. Set
    // before anything is saved.
    void setFlushed(std::function<void(bool allWritten)> flushed) { flushed_ = std::move(flushed); }

    // Known edits since the last save spare the comparison of long lines.
    void saveTimeline(const TimelineLines& lines, const std::string& videoId,
                      const EditedLines& edits = {});
    // Encodes an opened timeline in the background, so that the first save is as fast as later
    // ones.
    void prepareToSave(TimelineLines lines);
    // Loads a timeline on any thread. If no copy can be read, the backup's is used. Empty if there
    // is none.
    TimelineLines loadTimeline(const std::string& videoId);
    // Whether the last load found copies but could not read any of them, and nothing was saved
    // since. Such a timeline is not stored until the user changes it. Any thread.
    bool isTimelineUnreadable(const std::string& videoId) const;
    void deleteTimelineFile(const std::string& videoId);

    void saveCollection(const CollectionData& collection);
    std::optional<CollectionData> loadCollection(const std::string& id);  // any thread
    // The folder is removed at the next flush. Until then it is not read, not even by a load that
    // is running.
    void deleteCollection(const std::string& id);

    void scheduleSaveToDisk();
    void applicationWillTerminate();
    // Flushes on the calling thread even if nothing has changed; for the backup.
    void flushNow();
    // Called by a restore while it holds the flush lock. Files in Documents are replaced, so the
    // next flush writes all values again, and deleted collections may come back.
    void forgetWritten();
    // Called when all data is deleted, while the flush lock is held. Files are not written again
    // until their values change.
    void keepFromDocuments() { documents_.keepFromDocuments(); }
    // Prevents flushing while the lock is held. A restore uses it until it has listed the folders
    // that it puts in place.
    std::unique_lock<std::mutex> holdFlush() { return documents_.hold(); }

    // See DocumentWriter.
    bool hasLostChanges() const { return documents_.hasLostChanges(); }
    void noteLostChanges() { documents_.noteLostChanges(); }

    UserDefaults& userDefaults() { return defaults_; }

    // Documents/Tembrix-Stat
    std::filesystem::path dataFolder() const { return documents_.dataFolder(); }
    std::filesystem::path timelinesFolder() const { return documents_.timelinesFolder(); }
    std::filesystem::path collectionsFolder() const { return documents_.collectionsFolder(); }
    std::filesystem::path timelineFile(const std::string& videoId) const {
        return documents_.timelineFile(videoId);
    }
    std::filesystem::path screenshotsFolder(const std::string& videoId) const;

  private:
    // Returns false if the working copy has changed since `before` was read.
    bool fillWorkingCopy(const std::string& key, const std::optional<Bytes>& before,
                         BytesView value);
    void flush();
    bool isDeletedCollection(const std::string& key) const;
    std::optional<CollectionData> readCollectionFolder(const std::string& id);
    TimelineLines loadSavedTimeline(const std::string& videoId, const std::optional<Bytes>& cached);

    UserDefaults& defaults_;
    Scheduler& scheduler_;
    Directories directories_;
    Log& log_;
    CollectionIndexStorage* index_ = nullptr;
    DocumentWriter documents_;
    std::function<void(bool)> flushed_;
    std::shared_ptr<TimelineEncoder> encoder_;
    std::unique_ptr<Timer> saveToDiskTimer_;
    bool pendingSave_ = false;
    mutable std::mutex workingCopies_;          // held while a working copy is replaced
    std::set<std::string> unreadable_;          // ids of timelines; guarded by the same mutex
    std::set<std::string> deletedCollections_;  // keys; guarded by the same mutex
    SavedCopies* savedCopies_ = nullptr;
    BackgroundWork writing_;    // flushes
    BackgroundWork preparing_;  // the encoder of the timeline that was opened
};

}  // namespace tembrix
