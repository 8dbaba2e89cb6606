#pragma once

#include <filesystem>

#include "base/geometry.h"
#include "base/image.h"
#include "base/result.h"

namespace tembrix {

// The properties of a media file as the user sees it: rotation applied, time 0 at the first frame
// shown.
struct MediaInfo {
    double duration = 0;    // seconds
    Size size;              // pixels of the upright picture, square pixels
    int rotation = 0;       // clockwise degrees already applied in `size`: 0, 90, 180, 270
    double lastFrame = 0;   // start of the last frame in seconds
    double frameRate = 0;   // average frames per second; 0 if unknown
    double videoStart = 0;  // the container's time of the first frame shown, seconds
    bool hasVideo = false;
    bool hasAudio = false;
};

// A frame on the user's time axis and where to read it.
struct FramePlace {
    double start = 0;       // start of the frame in seconds
    double decodeFrom = 0;  // seconds; packets must be read from there to decode it
    bool indexed = true;    // if false, the file has no index and `decodeFrom` must be searched
};

// Media times are multiples of 1/600 second. Player, frame grab and export use the same rule: the
// frame at time t is the last one that starts at or before t plus half a tick.
inline constexpr double mediaTimescale = 600.0;
inline constexpr double frameTolerance = 0.5 / mediaTimescale;

// Examines media files. Calls block. Thread-safe. Errors: domain "media".
class Media {
  public:
    virtual ~Media() = default;
    virtual Result<MediaInfo> probe(const std::filesystem::path& file) = 0;
    // The frame shown at `seconds`, clamped to the video. Reads packets without decoding.
    virtual Result<FramePlace> framePlace(const std::filesystem::path& file, double seconds) = 0;
    // The picture shown at `seconds`, upright and in full size.
    virtual Result<ImageBuffer> frame(const std::filesystem::path& file, double seconds) = 0;
    // The same, scaled down to fit into `bounds`, but never up.
    virtual Result<ImageBuffer> thumbnail(const std::filesystem::path& file, double seconds,
                                          Size bounds) = 0;
};

}  // namespace tembrix
