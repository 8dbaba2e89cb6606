#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "base/log.h"
#include "base/result.h"

#include "core/records/annotation_records.h"

namespace tembrix {

class UserDefaults;

// The list of user collections: in memory, in its file, and in two copies in the user defaults. One
// copy contains changes that are not in the file yet, the other the list as last written to the
// file. A file that cannot be read, or that differs from the second copy in a single byte, is
// damaged, and the copy is used instead. Thread-safe.
//
// Each change and each replacement of the file starts a new generation. A list read from the file
// is discarded if a newer generation was started meanwhile.
class CollectionIndexList {
  public:
    CollectionIndexList(std::filesystem::path file, UserDefaults& defaults, Log& log);

    const std::filesystem::path& file() const { return file_; }
    std::vector<CollectionInfo> list();
    bool hasUnsavedChange() const { return ahead_; }

    // Sets a function that is called after each write of the file, on the thread that wrote it.
    // When this returns, no call of the previous one is running.
    void setWrittenNotice(std::function<void()> notice);
    // Discards the stored unsaved changes, because the file is newer. The list is read again.
    void dropUnsavedChange();

    // Changes the list in memory. The function returns whether it has changed anything.
    bool change(const std::function<bool(std::vector<CollectionInfo>&)>& change);
    // Makes the next write store the list even if it has not changed.
    void markUnsaved();
    // Writes unsaved changes to the file. If that fails, the error is logged and they remain
    // unsaved.
    void write();
    // Changes and writes the list as one operation, so that other threads see either both or none.
    void changeAndWrite(const std::function<void(std::vector<CollectionInfo>&)>& change);
    // Runs an operation that replaces or removes the file. Meanwhile nothing is written. Unsaved
    // changes are discarded, and the list is read again when it is needed.
    Result<void> replaceFile(const std::function<Result<void>()>& replace);

    // The list as last written to the file, from the defaults; absent if unknown.
    std::optional<std::vector<CollectionInfo>> secondCopy() const;

  private:
    std::vector<CollectionInfo> read() const;
    bool isLoaded() const { return ahead_ || !cache_.empty(); }
    void loadIfEmpty();
    void setAhead();
    void setWritten(const std::vector<CollectionInfo>& list);
    void notifyWritten() const;
    bool writeFile(const std::vector<CollectionInfo>& list) const;

    const std::filesystem::path file_;
    UserDefaults& defaults_;
    Log& log_;
    std::function<void()> notice_;  // guarded by writing_
    std::mutex writing_;            // locked before cacheLock_; keeps writes in order
    std::mutex cacheLock_;
    std::vector<CollectionInfo> cache_;
    std::uint64_t generation_ = 0;
    // The list has a change that is not in the file. Until it is written, an empty list means that
    // the last collection was removed, not that the file must be read.
    std::atomic<bool> ahead_ = false;
};

}  // namespace tembrix
