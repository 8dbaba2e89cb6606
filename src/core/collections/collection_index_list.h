#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "base/log.h"
#include "base/result.h"

#include "core/records/annotation_records.h"

namespace tembrix {

class UserDefaults;

// The list of user collections in memory, its file, and the copies of it in the user defaults: one
// of the changes that the file lacks, one of what the file was last written with. A file that
// cannot be read, or that differs from the second copy in a single byte, is damaged, and the copy
// is used instead. Safe from any thread.
//
// Each change and each replacement of the file counts as a new generation. A list that was read
// from the file is kept only if no newer generation has come meanwhile.
class CollectionIndexList {
  public:
    CollectionIndexList(std::filesystem::path file, UserDefaults& defaults, Log& log);

    const std::filesystem::path& file() const { return file_; }
    std::vector<CollectionInfo> list();
    bool hasUnsavedChange() const { return ahead_; }

    // Changes the list in memory; the change returns whether there was one.
    bool change(const std::function<bool(std::vector<CollectionInfo>&)>& change);
    // Makes the next write store the list even if it did not change.
    void markUnsaved();
    // Writes an unsaved change to the file. A failure is logged and keeps it unsaved.
    void write();
    // Changes the list and writes it in one go, so that nobody sees one without the other.
    void changeAndWrite(const std::function<void(std::vector<CollectionInfo>&)>& change);
    // Runs an operation that replaces or removes the file. No write runs meanwhile, unsaved changes
    // are dropped, and the list is read again when it is next needed.
    Result<void> replaceFile(const std::function<Result<void>()>& replace);

    // The list that the file was last written with, from the defaults; absent if unknown.
    std::optional<std::vector<CollectionInfo>> secondCopy() const;

  private:
    std::vector<CollectionInfo> read() const;
    bool isLoaded() const { return ahead_ || !cache_.empty(); }
    void loadIfEmpty();
    void setAhead();
    void setWritten(const std::vector<CollectionInfo>& list);
    bool writeFile(const std::vector<CollectionInfo>& list) const;

    const std::filesystem::path file_;
    UserDefaults& defaults_;
    Log& log_;
    std::mutex writing_;  // locked before cacheLock_; a later write never precedes an earlier one
    std::mutex cacheLock_;
    std::vector<CollectionInfo> cache_;
    std::uint64_t generation_ = 0;
    // The list has a change that the file lacks. Until it is written, an empty list means that the
    // last collection was removed, not that the file has yet to be read.
    std::atomic<bool> ahead_ = false;
};

}  // namespace tembrix
