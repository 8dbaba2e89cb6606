#include "base/files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/uuid.h"

namespace tembrix {

namespace {

Error fileError(int code, const std::filesystem::path& path) {
    return {"file", code, pathText(path) + ": " + std::strerror(code)};
}

class FileDescriptor {
  public:
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (number_ >= 0)
            ::close(number_);
    }

    bool open() const { return number_ >= 0; }
    int number() const { return number_; }

    // Closes the file now, because some file systems report a failed write only here.
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

bool writeAll(int descriptor, BytesView content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        content = content.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

constexpr std::string_view unfinishedPrefix = ".new-";

bool isUnfinished(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    return name.starts_with(unfinishedPrefix) && Uuid::parse(name.substr(unfinishedPrefix.size()));
}

// Makes a rename in the folder durable, if the file system supports it.
void syncFolder(const std::filesystem::path& folder) {
    const FileDescriptor descriptor(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.open())
        ::fsync(descriptor.number());
}

// Writes a new file next to the path with `fill` and then renames it to the path. `fill` returns
// false with errno set if it fails.
Result<void> replaceThrough(const std::filesystem::path& path,
                            const std::function<bool(int descriptor)>& fill,
                            const std::function<void(const std::filesystem::path&)>& begins = {}) {
    // The temporary name is short and unrelated to the file's, which may have the maximum length.
    const auto beside = path.parent_path() / (std::string(unfinishedPrefix) + freshId());
    if (begins)
        begins(beside);
    FileDescriptor file(::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.open())
        return fileError(errno, path);
    struct stat old {};
    const bool replaces = ::stat(path.c_str(), &old) == 0 && S_ISREG(old.st_mode);
    const bool written = (!replaces || ::fchmod(file.number(), old.st_mode & 07777) == 0) &&
                         fill(file.number()) && ::fsync(file.number()) == 0 && file.close() &&
                         ::rename(beside.c_str(), path.c_str()) == 0;
    if (!written) {
        const int code = errno;
        ::unlink(beside.c_str());
        return fileError(code, path);
    }
    syncFolder(path.parent_path());
    return {};
}

}  // namespace

Result<Bytes> readFile(const std::filesystem::path& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.open())
        return fileError(errno, path);
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return fileError(errno, path);
    if (S_ISDIR(status.st_mode))
        return fileError(EISDIR, path);
    Bytes content(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t size = 0;
    for (;;) {
        if (size == content.size())
            content.resize(content.size() * 2);
        const ssize_t count = ::read(file.number(), content.data() + size, content.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return fileError(errno, path);
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    content.resize(size);
    return content;
}

bool fileContains(const std::filesystem::path& path, BytesView content) {
    std::error_code error;
    if (std::filesystem::file_size(path, error) != content.size() || error)
        return false;
    const auto present = readFile(path);
    return present && std::equal(present->begin(), present->end(), content.begin(), content.end());
}

Result<void> replaceFile(const std::filesystem::path& path, BytesView content) {
    return replaceThrough(path, [&](int descriptor) { return writeAll(descriptor, content); });
}

Result<void> replaceFileByCopy(const std::filesystem::path& path,
                               const std::filesystem::path& source,
                               const std::function<bool()>& goOn,
                               const std::function<void(const std::filesystem::path&)>& begins) {
    const FileDescriptor original(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
    if (!original.open())
        return fileError(errno, source);
    std::error_code ignored;
    if (std::filesystem::equivalent(path, source, ignored))
        return {};
    const auto copy = [&](int descriptor) {
        Bytes chunk(std::size_t{4} << 20);
        for (;;) {
            if (goOn && !goOn()) {
                errno = ECANCELED;
                return false;
            }
            const ssize_t count = ::read(original.number(), chunk.data(), chunk.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return count == 0;
            if (!writeAll(descriptor, {chunk.data(), static_cast<std::size_t>(count)}))
                return false;
        }
    };
    return replaceThrough(path, copy, begins);
}

void removeUnfinishedReplacement(const std::filesystem::path& file) {
    if (isUnfinished(file))
        ::unlink(file.c_str());
}

void removeUnfinishedReplacements(const std::filesystem::path& folder) {
    std::error_code failure;
    std::vector<std::filesystem::path> left;
    for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (isUnfinished(entry->path()))
            left.push_back(entry->path());
    }
    for (const auto& file : left)
        ::unlink(file.c_str());
}

Result<void> syncTree(const std::filesystem::path& path) {
    std::error_code failure;
    if (std::filesystem::is_directory(path, failure)) {
        for (std::filesystem::directory_iterator entry(path, failure), end;
             !failure && entry != end; entry.increment(failure)) {
            if (const auto done = syncTree(entry->path()); !done)
                return done;
        }
        if (failure)
            return fileError(failure.value(), path);
        syncFolder(path);
        return {};
    }
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.open() || ::fsync(file.number()) != 0)
        return fileError(errno, path);
    return {};
}

bool isFileName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\\\0", 3)) == name.npos;
}

Result<void> makeFolder(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error)
        return fileError(error.value(), path);
    if (!std::filesystem::is_directory(path, error))
        return fileError(ENOTDIR, path);
    return {};
}

bool isWritableFolder(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored) && ::access(path.c_str(), W_OK | X_OK) == 0;
}

std::optional<Date> creationDate(const std::filesystem::path& path) {
#ifdef __APPLE__
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    const auto& made = status.st_birthtimespec;
#else
    struct statx status {};
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &status) != 0 ||
        !(status.stx_mask & STATX_BTIME))
        return std::nullopt;
    const auto& made = status.stx_btime;
#endif
    return Date{static_cast<double>(made.tv_sec) + static_cast<double>(made.tv_nsec) * 1e-9};
}

std::string pathText(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

std::filesystem::path pathFromText(std::string_view utf8) {
    return std::filesystem::path(
        std::u8string_view(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

}  // namespace tembrix
