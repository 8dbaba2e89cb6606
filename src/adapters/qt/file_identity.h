#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tembrix {

// What distinguishes a file from all others that are ever in its folder. The number alone is not
// enough: a file system gives the number of a deleted file to the next one that is made. The number
// of the device is left out, because it can change from one start of the machine to the next.
struct FileIdentity {
    std::uint64_t number = 0;    // the file system's own
    std::int64_t birthTime = 0;  // microseconds since 1970
    bool operator==(const FileIdentity&) const = default;
};

// Absent where the file system keeps no lasting numbers or no birth times.
std::optional<FileIdentity> fileIdentity(const std::filesystem::path& file);

}  // namespace tembrix
