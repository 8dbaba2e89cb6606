#include "core/shell/found_videos.h"

#include <algorithm>
#include <system_error>

#include "base/files.h"
#include "base/utf8_text.h"

namespace tembrix {

namespace {

namespace fs = std::filesystem;

bool isVideoName(const fs::path& file) {
    const std::string extension = pathText(file.extension());
    const auto& known = videoExtensions();
    return extension.size() > 1 &&
           std::find(known.begin(), known.end(), lowerCased(extension.substr(1))) != known.end();
}

std::vector<fs::path> videosIn(const fs::path& folder, const std::stop_token& stop) {
    std::vector<fs::path> videos;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                           error);
    for (; !error && entry != fs::recursive_directory_iterator() && !stop.stop_requested();
         entry.increment(error)) {
        std::error_code unreadable;
        const bool hidden = pathText(entry->path().filename()).starts_with('.');
        if (hidden)
            entry.disable_recursion_pending();
        else if (entry->is_regular_file(unreadable) && isVideoName(entry->path()))
            videos.push_back(entry->path());
    }
    std::sort(videos.begin(), videos.end());
    return videos;
}

}  // namespace

const std::vector<std::string>& videoExtensions() {
    static const std::vector<std::string> extensions{"mp4",  "mov", "avi", "mkv",  "m4v",  "mpg",
                                                     "mpeg", "ts",  "mts", "m2ts", "webm", "wmv",
                                                     "flv",  "mxf", "3gp", "vob",  "ogv",  "dv"};
    return extensions;
}

FoundVideos findVideos(const std::vector<fs::path>& paths, const std::stop_token& stop) {
    FoundVideos found;
    for (const auto& path : paths) {
        std::error_code ignored;
        const bool folder = fs::is_directory(path, ignored);
        const auto videos = folder              ? videosIn(path, stop)
                            : isVideoName(path) ? std::vector{path}
                                                : std::vector<fs::path>();
        if (videos.empty())
            found.others.push_back(path);
        found.videos.insert(found.videos.end(), videos.begin(), videos.end());
    }
    return found;
}

}  // namespace tembrix
