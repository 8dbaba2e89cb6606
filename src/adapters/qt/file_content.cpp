#include "adapters/qt/file_content.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/bytes.h"
#include "base/content_hash.h"

namespace tembrix {
namespace {

constexpr std::uint64_t sampleSize = std::uint64_t{64} * 1024;
constexpr std::uint64_t changingBegin = std::uint64_t{16} * 1024;
// A file of this size cannot be written anew within one tick of the file system's clock.
constexpr std::uint64_t largeSize = std::uint64_t{1024} * 1024;

class OpenFile {
  public:
    explicit OpenFile(const std::filesystem::path& file) : handle_(open(file)) {
        struct stat status {};
        if (handle_ < 0 || ::fstat(handle_, &status) != 0)
            return;
        isFile_ = S_ISREG(status.st_mode);
        size_ = static_cast<std::uint64_t>(status.st_size);
        written_ = status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (handle_ >= 0)
            ::close(handle_);
    }

    bool isFile() const { return isFile_; }
    std::uint64_t size() const { return size_; }
    std::int64_t written() const { return written_; }

    // The samples of the file when it had this size; absent if they cannot be read in full.
    std::optional<std::uint64_t> head(std::uint64_t size) const {
        return hash(headBegin(size), headEnd(size));
    }
    std::optional<std::uint64_t> tail(std::uint64_t size) const {
        return hash(std::max(headEnd(size), size - std::min(size, sampleSize)), size);
    }

  private:
    static int open(const std::filesystem::path& file) {
        // Without O_NONBLOCK, a pipe would be waited for.
        constexpr int mode = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
#ifdef O_NOATIME
        if (const int handle = ::open(file.c_str(), mode | O_NOATIME); handle >= 0)
            return handle;
        if (errno != EPERM)
            return -1;
#endif
        return ::open(file.c_str(), mode);
    }
    static std::uint64_t headBegin(std::uint64_t size) {
        return size > 2 * changingBegin ? changingBegin : 0;
    }
    static std::uint64_t headEnd(std::uint64_t size) {
        return std::min(size, headBegin(size) + sampleSize);
    }
    std::optional<std::uint64_t> hash(std::uint64_t begin, std::uint64_t end) const {
        Bytes sample(end - begin);
        for (std::size_t done = 0; done < sample.size();) {
            const auto count = ::pread(handle_, sample.data() + done, sample.size() - done,
                                       static_cast<off_t>(begin + done));
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return std::nullopt;
            done += static_cast<std::size_t>(count);
        }
        return contentHash(sample);
    }

    int handle_;
    bool isFile_ = false;
    std::uint64_t size_ = 0;
    std::int64_t written_ = 0;
};

}  // namespace

bool haveEqualContent(const FileContent& one, const FileContent& other) {
    return one.size == other.size && one.head == other.head && one.tail == other.tail;
}

std::optional<FileContent> fileContent(const std::filesystem::path& path) {
    const OpenFile file(path);
    if (!file.isFile())
        return std::nullopt;
    const auto head = file.head(file.size());
    const auto tail = file.tail(file.size());
    if (!head || !tail)
        return std::nullopt;
    return FileContent{file.size(), file.written(), *head, *tail};
}

bool hasContent(const std::filesystem::path& path, const FileContent& content, ContentMay may) {
    const OpenFile file(path);
    if (!file.isFile())
        return false;
    const bool isLongAsEver = file.size() == content.size;
    if (isLongAsEver && content.size >= largeSize && file.written() == content.written)
        return true;
    if ((may == ContentMay::beEqual && !isLongAsEver) ||
        (may == ContentMay::beLonger && file.size() < content.size))
        return false;
    return file.head(content.size) == content.head &&
           (may == ContentMay::change || file.tail(content.size) == content.tail);
}

}  // namespace tembrix
