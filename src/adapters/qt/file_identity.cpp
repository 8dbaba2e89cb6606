#include "adapters/qt/file_identity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sys/stat.h>

#include "base/files.h"

#ifdef __linux__
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

namespace tembrix {
namespace {

// Whether the file system keeps its file numbers. Those listed here assign new numbers at each
// mount.
bool numbersLast(const std::filesystem::path& file) {
#ifdef __linux__
    constexpr unsigned exfat = 0x2011BAB0, fuse = 0x65735546;
    constexpr std::array<unsigned, 3> temporary = {MSDOS_SUPER_MAGIC, exfat, fuse};
    struct statfs status {};
    return ::statfs(file.c_str(), &status) == 0 &&
           std::find(temporary.begin(), temporary.end(), static_cast<unsigned>(status.f_type)) ==
               temporary.end();
#else
    return !file.empty();
#endif
}

}  // namespace

std::optional<FileIdentity> fileIdentity(const std::filesystem::path& file) {
    struct stat status {};
    const auto born = creationDate(file);
    if (!born || ::stat(file.c_str(), &status) != 0 || !numbersLast(file))
        return std::nullopt;
    return FileIdentity{status.st_ino, std::llround(born->secondsSince1970 * 1e6)};
}

}  // namespace tembrix
