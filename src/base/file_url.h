#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tembrix {

// The absolute path as a file URL: "file:///videos/a%20b.mp4". Bytes not allowed in a URL are
// escaped, so that every file name can be converted back.
std::string fileUrl(const std::filesystem::path& path);
// Absent if the text is not a file URL of this machine.
std::optional<std::filesystem::path> pathOfFileUrl(std::string_view url);

}  // namespace tembrix
