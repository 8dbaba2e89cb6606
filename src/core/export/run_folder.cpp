#include "core/export/run_folder.h"

#include <cerrno>
#include <set>
#include <system_error>
#include <utility>

#include "base/bytes.h"
#include "base/files.h"
#include "base/uuid.h"

namespace tembrix {

namespace {

namespace fs = std::filesystem;

constexpr const char* lockExtension = ".lock";
constexpr const char* unfinishedNote = ".unfinished";

// The folder of all run folders.
fs::path runsFolder(const fs::path& temporary) {
    return temporary / "exports";
}

// The lock file of a run is next to its folder. It is created before the folder and removed after
// it.
fs::path lockFile(fs::path folder) {
    return folder += lockExtension;
}

}  // namespace

Result<std::shared_ptr<RunFolder>> RunFolder::make(const fs::path& temporary) {
    const auto runs = runsFolder(temporary);
    if (const auto made = makeFolder(runs); !made)
        return made.error();
    // Locking fails only if another process is cleaning up at the moment or if the folder cannot be
    // written.
    constexpr int attempts = 3;
    for (int i = 0; i < attempts; ++i) {
        fs::path path = runs / freshId();
        auto lock = FileLock::tryLock(lockFile(path));
        if (!lock)
            continue;
        if (const auto made = makeFolder(path); !made) {
            std::error_code ignored;
            fs::remove(lockFile(path), ignored);
            return made.error();
        }
        return std::shared_ptr<RunFolder>(new RunFolder(std::move(path), std::move(*lock)));
    }
    return Error{"file", EACCES, pathText(runs)};
}

RunFolder::RunFolder(fs::path path, FileLock lock)
    : path_(std::move(path)), lock_(std::move(lock)) {}

RunFolder::~RunFolder() {
    std::error_code ignored;
    if (kept_)
        fs::remove(path_, ignored);  // if it is empty
    else
        fs::remove_all(path_, ignored);
    fs::remove(lockFile(path_), ignored);
}

void noteUnfinishedCopy(const fs::path& runFolder, const fs::path& file) {
    (void)replaceFile(runFolder / unfinishedNote, toBytes(pathText(fs::absolute(file))));
}

void forgetUnfinishedCopy(const fs::path& runFolder) {
    std::error_code ignored;
    fs::remove(runFolder / unfinishedNote, ignored);
}

void removeAbandonedRunFolders(const fs::path& temporary) {
    std::set<fs::path> folders;
    std::error_code failure;
    for (fs::directory_iterator entry(runsFolder(temporary), failure), end;
         !failure && entry != end; entry.increment(failure)) {
        auto folder = entry->path();
        if (folder.extension() == lockExtension)
            folder.replace_extension();
        if (Uuid::parse(folder.filename().string()))
            folders.insert(std::move(folder));
    }
    for (const auto& folder : folders) {
        const auto lock = FileLock::tryLock(lockFile(folder));
        if (!lock)
            continue;
        if (const auto note = readFile(folder / unfinishedNote))
            removeUnfinishedReplacement(pathFromText(asText(*note)));
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        fs::remove(lockFile(folder), ignored);
    }
}

}  // namespace tembrix
