#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "base/file_lock.h"
#include "base/result.h"

namespace tembrix {

// The temporary folder of one run. No other run writes to it, and other processes do not remove it
// as long as this object exists. Thread-safe.
class RunFolder {
  public:
    // Creates a new folder below the program's temporary folder.
    static Result<std::shared_ptr<RunFolder>> make(const std::filesystem::path& temporary);
    // Removes the folder and its files, which may take a while for large ones.
    ~RunFolder();
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // Keeps the files until the next start of the program.
    void keep(bool kept = true) { kept_ = kept; }

  private:
    friend struct AbandonedRuns;
    RunFolder(std::filesystem::path path, FileLock lock);

    const std::filesystem::path path_;
    const FileLock lock_;
    std::atomic<bool> kept_ = false;
};

// Notes in a run's folder the temporary file of the copy that saves its product, so that the file
// is removed with the folder if the process is killed meanwhile.
void noteUnfinishedCopy(const std::filesystem::path& runFolder, const std::filesystem::path& file);
void forgetUnfinishedCopy(const std::filesystem::path& runFolder);

// A finished product that no run has saved yet.
struct UnsavedProduct {
    std::shared_ptr<RunFolder> folder;  // kept
    std::filesystem::path file;
    std::optional<std::filesystem::path> source;  // the video that it was made from
};

// Notes in a run's folder that its product has yet to be saved, so that a later start offers it.
void noteUnsavedProduct(const UnsavedProduct& product);
void forgetUnsavedProduct(const std::filesystem::path& runFolder);

// Removes the folders of runs that have ended or whose process was killed. Folders of running
// exports, in this or another process, are kept, and so are those with unsaved products, which are
// returned.
std::vector<UnsavedProduct> removeAbandonedRunFolders(const std::filesystem::path& temporary);

}  // namespace tembrix
