#include "core/export/run_folder.h"

#include <cerrno>
#include <optional>
#include <set>
#include <string>
#include <string_view>
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
constexpr const char* unsavedNote = ".unsaved";

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

// Two lines: the name of the product in the folder, and the path of its source, which may be empty.
void noteUnsavedProduct(const UnsavedProduct& product) {
    const std::string source = product.source ? pathText(*product.source) : std::string();
    (void)replaceFile(product.folder->path() / unsavedNote,
                      toBytes(pathText(product.file.filename()) + "\n" + source));
}

void forgetUnsavedProduct(const fs::path& runFolder) {
    std::error_code ignored;
    fs::remove(runFolder / unsavedNote, ignored);
}

struct AbandonedRuns {
    static std::optional<UnsavedProduct> unsavedIn(const fs::path& folder, FileLock& lock) {
        const auto note = readFile(folder / unsavedNote);
        const auto text = note ? asText(*note) : std::string_view();
        const auto end = text.find('\n');
        if (end == std::string_view::npos)
            return std::nullopt;
        UnsavedProduct product;
        product.file = folder / pathFromText(text.substr(0, end)).filename();
        std::error_code ignored;
        if (!fs::is_regular_file(product.file, ignored))
            return std::nullopt;
        if (text.size() > end + 1)
            product.source = pathFromText(text.substr(end + 1));
        product.folder = std::shared_ptr<RunFolder>(new RunFolder(folder, std::move(lock)));
        product.folder->keep();
        return product;
    }
};

std::vector<UnsavedProduct> removeAbandonedRunFolders(const fs::path& temporary) {
    std::vector<UnsavedProduct> unsaved;
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
        auto lock = FileLock::tryLock(lockFile(folder));
        if (!lock)
            continue;
        if (const auto note = readFile(folder / unfinishedNote))
            removeUnfinishedReplacement(pathFromText(asText(*note)));
        if (auto product = AbandonedRuns::unsavedIn(folder, *lock)) {
            forgetUnfinishedCopy(folder);
            unsaved.push_back(std::move(*product));
            continue;
        }
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        fs::remove(lockFile(folder), ignored);
    }
    return unsaved;
}

}  // namespace tembrix
