#pragma once

#include <filesystem>
#include <string>

namespace tembrix {

// The data of an analyst in the middle of a season. Written to the user's folders according to the
// environment.
struct WorkdayData {
    static constexpr int videos = 200;
    static constexpr int collections = 30;
    static constexpr int tagGroups = 6;
    static constexpr int tagsPerGroup = 7;
    static constexpr int labels = 60;
    static constexpr int timeEvents = 10;
    static constexpr int lines = 50;
    static constexpr int stampsPerLine = 200;
    static constexpr int stamps = lines * stampsPerLine;
    static constexpr double matchSeconds = 3600;

    // The hot keys of the tags in the first group, which need no labels.
    static constexpr const char* keys = "QWERTY";

    static std::string collectionName(int number);
    static std::string matchName();

    // Returns false if something could not be created. `scratch` is the folder for the source
    // material of the videos.
    static bool write(const std::filesystem::path& scratch);

    // The number of stamps of the match in the working copy and in the document, as stored;
    // negative if there is none.
    static int storedStamps();
    static int durableStamps();
};

}  // namespace tembrix
