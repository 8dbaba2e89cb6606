#pragma once

#include <filesystem>

#include "base/geometry.h"
#include "base/image.h"
#include "base/result.h"

namespace tembrix {

// What a media file holds, as the user sees it: rotation applied, time 0 at the first frame shown.
struct MediaInfo {
    double duration = 0;    // seconds
    Size size;              // pixels of the upright picture, square pixels
    int rotation = 0;       // clockwise degrees already applied in `size`: 0, 90, 180, 270
    double lastFrame = 0;   // seconds; when the last frame begins to show
    double frameRate = 0;   // average frames per second; 0 if unknown
    double videoStart = 0;  // the container's own time of the first frame shown, seconds
    bool hasVideo = false;
    bool hasAudio = false;
};

// Where a frame is in its file, on the user's time axis.
struct FramePlace {
    double start = 0;       // seconds; when it begins to show
    double decodeFrom = 0;  // seconds; packets must be read from here on to decode it
    bool indexed = true;    // false: the file has no index, and readers search for `decodeFrom`
};

// Media times are multiples of 1/600 second. Player, frame grab and export agree on one rule: the
// frame of time t is the last one that starts at or before t plus half a tick.
inline constexpr double mediaTimescale = 600.0;
inline constexpr double frameTolerance = 0.5 / mediaTimescale;

// Looks into media files. Calls block; safe from any thread. Errors: domain "media".
class Media {
  public:
    virtual ~Media() = default;
    virtual Result<MediaInfo> probe(const std::filesystem::path& file) = 0;
    // The frame that shows at `seconds`, clamped to the video. Reads packets, decodes nothing.
    virtual Result<FramePlace> framePlace(const std::filesystem::path& file, double seconds) = 0;
    // The frame that shows at `seconds`, upright, at full size.
    virtual Result<ImageBuffer> frame(const std::filesystem::path& file, double seconds) = 0;
    // The same, scaled down to fit into `bounds`, never up.
    virtual Result<ImageBuffer> thumbnail(const std::filesystem::path& file, double seconds,
                                          Size bounds) = 0;
};

}  // namespace tembrix
