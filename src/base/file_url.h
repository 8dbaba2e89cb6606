#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tembrix {

// The absolute path as a file URL: "file:///videos/a%20b.mp4". Bytes that a URL may not hold are
// escaped, so that every file name comes back as it was.
std::string fileUrl(const std::filesystem::path& path);
// Absent for anything but a file URL of this machine.
std::optional<std::filesystem::path> pathOfFileUrl(std::string_view url);

}  // namespace tembrix
