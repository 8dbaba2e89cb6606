#pragma once

#include <filesystem>
#include <optional>
#include <utility>

namespace tembrix {

// An exclusive lock on a file. The operating system releases it when the process ends for any
// reason. It also excludes other locks of the same process.
class FileLock {
  public:
    // Creates the file if there is none. Absent if another lock exists or the file cannot be
    // opened.
    static std::optional<FileLock> tryLock(const std::filesystem::path& file);

    FileLock(FileLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileLock();

  private:
    explicit FileLock(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

}  // namespace tembrix
