#pragma once

#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace tembrix {

// The extensions of videos, without dots, lower case.
const std::vector<std::string>& videoExtensions();

struct FoundVideos {
    std::vector<std::filesystem::path> videos;
    std::vector<std::filesystem::path> others;  // files that are no videos; folders without videos
};

// Looks for videos among the files and in the folders. Files of other kinds in a folder are left
// out. Any thread.
FoundVideos findVideos(const std::vector<std::filesystem::path>& paths,
                       const std::stop_token& stop);

}  // namespace tembrix
