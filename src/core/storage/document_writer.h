#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/log.h"
#include "base/result.h"

#include "ports/user_defaults.h"

#include "core/records/annotation_records.h"
#include "core/storage/written_values.h"

namespace tembrix {

class CollectionIndexStorage;

// Writes the working copies of timelines and collections to their documents, and knows which change
// of each value the documents contain. Any thread; one at a time writes.
class DocumentWriter {
  public:
    // Reads what the preceding run has written. Working copies that are older than their documents
    // are set aside and dropped.
    DocumentWriter(std::filesystem::path dataFolder, UserDefaults& defaults, Log& log);

    // Without an index, no folder is removed.
    void setCollectionIndex(CollectionIndexStorage* index);

    // Writes what has changed, and removes the folders of deleted collections. Returns whether all
    // documents could be written.
    bool writeAll();
    // Prevents writing while the lock is held.
    std::unique_lock<std::mutex> hold() { return std::unique_lock(writing_); }
    // While writing is prevented: everything is written again, or nothing before it changes.
    void forget();
    void keepFromDocuments();

    // The database does not detect every damage of a small value. A working copy that has not
    // changed since the preceding run wrote it must still be equal to its document. If the document
    // was replaced as well, the working copy counts as good, and the document is set aside.
    bool isDamagedTimeline(const std::string& id, BytesView workingCopy) const;
    bool isDamagedCollection(const std::string& id, const CollectionData& workingCopy) const;

    // Whether documents contain later changes than the defaults, as after damage to the end of the
    // database log. Until the next start no folder of a collection is removed then, because the
    // index may be too old to list it.
    bool hasLostChanges() const { return lostChanges_; }
    void noteLostChanges() { lostChanges_ = true; }

    const std::filesystem::path& dataFolder() const { return dataFolder_; }
    std::filesystem::path timelinesFolder() const;
    std::filesystem::path collectionsFolder() const;
    std::filesystem::path timelineFile(const std::string& videoId) const;

  private:
    void dropOutdatedWorkingCopies();
    bool isOutdated(const std::string& key, std::uint64_t number) const;
    std::uint64_t documentHash(const std::string& key) const;
    std::optional<CollectionData> readCollection(const std::string& id) const;
    const WrittenValues::Entry* entryIfUnchanged(const std::string& key) const;
    void writeTimelines();
    void writeTimeline(const std::string& key);
    void writeCollections();
    void writeCollection(const std::string& key);
    void removeDeletedCollections(const std::vector<std::string>& keys);
    std::optional<std::vector<CollectionInfo>> indexedCollections();
    void saveWritten();
    void notWritten(const std::string& what, const Error& error);

    const std::filesystem::path dataFolder_;
    UserDefaults& defaults_;
    Log& log_;
    std::atomic<bool> lostChanges_ = false;
    std::mutex writing_;  // guards the members up to the next comment
    CollectionIndexStorage* index_ = nullptr;
    WrittenValues written_;
    bool allWritten_ = true;                // so far, by the present call of writeAll
    const WrittenValues::Entries atStart_;  // the entries of the preceding run
};

}  // namespace tembrix
