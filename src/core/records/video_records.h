#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/date.h"
#include "base/image.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// One entry of the video library.
struct VideosData {
    Bytes bookmark;
    std::string id;  // 32 upper-case hexadecimal characters
    std::optional<std::string> customName;
    std::optional<bool> isFavorite;
    bool operator==(const VideosData&) const = default;
};

// The older form of an entry, which contained its timelines.
struct VideosDataOldFormat {
    Bytes bookmark;
    std::string id;
    TimelineLines timelines;
    std::optional<std::string> customName;
    std::optional<bool> isFavorite;
    bool operator==(const VideosDataOldFormat&) const = default;
};

// An entry with its preview picture, which is not stored.
struct FilesFile {
    VideosData videoData;
    std::shared_ptr<const ImageBuffer> preview;
    bool operator==(const FilesFile&) const = default;
};

// The data about a match that the user enters.
struct VideoMetadata {
    std::string team1;
    std::string team2;
    std::string score;
    Date dateTime;
    std::optional<std::string> urlString;  // file URL of the video
    bool operator==(const VideoMetadata&) const = default;

    // Teams, score and date, joined by "_", without blanks. `fileStamp` formats the date.
    std::string videoName(const std::function<std::string(Date)>& fileStamp) const;
};

// What a match is called in windows and by screen readers.
struct MatchTitle {
    std::string name;            // teams and score: "Red Lions – Blue Foxes, 2-1"
    std::optional<Date> moment;  // when it was played, if the name says so
    bool operator==(const MatchTitle&) const = default;
};

// Empty if neither a team nor the score was entered.
std::string matchTitle(const VideoMetadata& match);

// Reads the name of an entry. A name made by videoName() is turned into words, with the match that
// it was made from if that is known. Any other name stays as it is.
MatchTitle matchTitle(const std::string& videoName, const std::optional<VideoMetadata>& match);

}  // namespace tembrix
