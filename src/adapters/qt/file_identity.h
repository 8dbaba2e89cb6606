#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tembrix {

// Distinguishes a file from all other files that are or were in its folder. The number alone is not
// sufficient, because the file system reuses the numbers of deleted files. The device number is not
// included, because it can change when the machine is restarted.
struct FileIdentity {
    std::uint64_t number = 0;    // inode number
    std::int64_t birthTime = 0;  // microseconds since 1970
    bool operator==(const FileIdentity&) const = default;
};

// Absent if the file system has no permanent numbers or no birth times.
std::optional<FileIdentity> fileIdentity(const std::filesystem::path& file);

}  // namespace tembrix
