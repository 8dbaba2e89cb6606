#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/directories.h"
#include "ports/scheduler.h"
#include "ports/user_defaults.h"

#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"
#include "core/storage/collection_index_storage.h"
#include "core/storage/written_values.h"

namespace tembrix {

class SavedCopies;
class TimelineEncoder;

// The two-level store of timelines and collections. The user defaults hold the working copy,
// written at once on every change; files under Documents hold the durable copy, written at most
// once per 30 seconds and at the end. Edits on the main thread; the flush runs in the background.
class InMemoryStorageManager {
  public:
    static constexpr double saveToDiskInterval = 30.0;

    InMemoryStorageManager(UserDefaults& defaults, Scheduler& scheduler, Directories directories,
                           Log& log);
    ~InMemoryStorageManager();

    // The index comes up after the storage; without one the flush removes no folder at all.
    void setCollectionIndex(CollectionIndexStorage* index);

    // Where copies that cannot be read are looked for. Set before anything is loaded.
    void setSavedCopies(SavedCopies* copies);

    void saveTimeline(const TimelineLines& lines, const std::string& videoId);
    // Encodes what was opened in the background, so that the first save costs no more than the
    // later ones.
    void prepareToSave(TimelineLines lines);
    // Any thread. A timeline of which no copy can be read is looked for in the backup. The worst
    // case is empty.
    TimelineLines loadTimeline(const std::string& videoId);
    // Whether the last load found copies but could read none, and nothing was saved since. Such a
    // timeline is not stored before the user changes it. Any thread.
    bool isTimelineUnreadable(const std::string& videoId) const;
    void deleteTimelineFile(const std::string& videoId);

    void saveCollection(const CollectionData& collection);
    std::optional<CollectionData> loadCollection(const std::string& id);  // any thread
    void deleteCollection(const std::string& id);  // the folder goes with the next flush

    void scheduleSaveToDisk();
    void applicationWillTerminate();
    // Runs the flush on the calling thread, whether or not a change waits; for the backup.
    void flushNow();
    // For a restore, while it holds the flush: files of Documents are replaced, so that the next
    // flush writes every value again.
    void forgetWritten();
    // For the deletion of all data, while it holds the flush: no flush brings the files back
    // before their values change.
    void keepFromDocuments();
    // No flush runs while the lock is held: a restore puts folders in place before it has listed
    // them.
    std::unique_lock<std::mutex> holdFlush();

    UserDefaults& userDefaults() { return defaults_; }

    std::filesystem::path dataFolder() const;  // Documents/Tembrix-Stat
    std::filesystem::path timelinesFolder() const;
    std::filesystem::path collectionsFolder() const;
    std::filesystem::path timelineFile(const std::string& videoId) const;
    std::filesystem::path screenshotsFolder(const std::string& videoId) const;

  private:
    struct Gate;

    // False if the working copy is no longer what it was before the disk was read.
    bool fillWorkingCopy(const std::string& key, const std::optional<Bytes>& before,
                         BytesView value);
    void dropOutdatedWorkingCopies();
    bool isOutdated(const std::string& key, std::uint64_t number) const;
    void flush();
    void writeAll();
    void saveWritten();
    void saveTimelinesToDisk();
    void saveTimelineToDisk(const std::string& key);
    void saveCollectionsToDisk();
    void removeDeletedCollections(const std::vector<std::string>& cachedIds);
    std::optional<std::vector<CollectionInfo>> indexedCollections();
    bool writeCollection(const CollectionData& collection);
    template <class Record>
    bool writeCollectionFile(const std::filesystem::path& file, const Record& record);
    std::optional<CollectionData> readCollectionFolder(const std::string& id);
    TimelineLines loadSavedTimeline(const std::string& videoId, const std::optional<Bytes>& cached);

    UserDefaults& defaults_;
    Scheduler& scheduler_;
    Directories directories_;
    Log& log_;
    CollectionIndexStorage* index_ = nullptr;  // read and set through the gate
    WrittenValues written_;                    // used through the gate
    std::shared_ptr<TimelineEncoder> encoder_;
    int encodings_ = 0;  // begun so far; the last one's encoder is the one to keep
    std::unique_ptr<Timer> saveToDiskTimer_;
    bool pendingSave_ = false;
    mutable std::mutex workingCopies_;  // a working copy is replaced by one writer at a time
    std::set<std::string> unreadable_;  // ids of timelines; under the same lock
    SavedCopies* savedCopies_ = nullptr;
    std::shared_ptr<Gate> gate_;
};

}  // namespace tembrix
