#include "base/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tembrix {

std::optional<FileLock> FileLock::tryLock(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return std::nullopt;
    FileLock lock(descriptor);
    struct stat status {};
    // Another owner may remove the file between the two calls above.
    const bool locked = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 &&
                        ::fstat(descriptor, &status) == 0 && status.st_nlink > 0;
    if (!locked)
        return std::nullopt;
    return lock;
}

FileLock::~FileLock() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

}  // namespace tembrix
