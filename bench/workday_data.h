#pragma once

#include <filesystem>
#include <string>

namespace tembrix {

// What an analyst has on the disk in the middle of a season. Written to the folders of the user
// whom the environment names.
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

    // The keys of the tags of the first group, which ask for no labels.
    static constexpr const char* keys = "QWERTY";

    static std::string collectionName(int number);
    static std::string matchName();

    // False if anything of it could not be made. `scratch` keeps the videos' raw material.
    static bool write(const std::filesystem::path& scratch);

    // The stamps of the match in the working copy and in the durable one, read anew; negative where
    // there is none.
    static int storedStamps();
    static int durableStamps();
};

}  // namespace tembrix
