#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>

#include "base/file_lock.h"
#include "base/result.h"

namespace tembrix {

// The temporary folder of one run. No other run writes to it, and the start of another process does
// not remove it as long as this object exists. Safe from any thread.
class RunFolder {
  public:
    // Makes a new folder below the program's temporary folder.
    static Result<std::shared_ptr<RunFolder>> make(const std::filesystem::path& temporary);
    // Removes the folder with its files, which may take a while for large ones.
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // Leaves the files where they are until the program starts again.
    void keep() { kept_ = true; }

  private:
    RunFolder(std::filesystem::path path, FileLock lock);

    const std::filesystem::path path_;
    const FileLock lock_;
    std::atomic<bool> kept_ = false;
};

// Removes the folders of runs that have ended or whose process was killed. The folders of current
// runs, of this process or another one, stay.
void removeAbandonedRunFolders(const std::filesystem::path& temporary);

}  // namespace tembrix
