#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <variant>
#include <vector>

#include "base/geometry.h"
#include "base/image.h"
#include "base/result.h"

namespace tembrix {

// A piece of the source video with its sound, in seconds of the source.
struct SourcePiece {
    double start = 0;
    double duration = 0;
};

// A silent still picture, fitted whole and centered on black. A film of many stills sets `load`
// instead of the image, so that only the visible one uses memory. It is called on a thread of the
// renderer. It may return an empty picture, which shows as black.
struct StillPiece {
    ImageBuffer image;
    double duration = 0;
    std::function<ImageBuffer()> load;  // used if `image` is empty
};

// A picture blended over the film from `start` for `duration` seconds of the film. Its top left
// corner is given in pixels of the render size. A film of many cuts sets `paint` instead of the
// image, so that only visible pictures use memory. It is called once, on a thread of the renderer,
// shortly before the overlay appears. It may return an empty picture, which shows nothing.
struct MovieOverlay {
    ImageBuffer image;
    int x = 0;
    int y = 0;
    double start = 0;
    double duration = 0;
    std::function<ImageBuffer()> paint;  // used if `image` is empty
};

struct MovieJob {
    std::filesystem::path source;
    std::vector<std::variant<SourcePiece, StillPiece>> pieces;  // in the order of the film
    std::vector<MovieOverlay> overlays;
    Size renderSize;  // pixels
    int framesPerSecond = 30;
    std::filesystem::path target;  // MPEG-4; must not exist
};

// A film being rendered. Safe from any thread.
class MovieSession {
  public:
    virtual ~MovieSession() = default;
    virtual float progress() const = 0;  // 0 to 1
    virtual void cancel() = 0;           // the run ends within a second
};

// Renders jobs to H.264 and AAC. Frame k of the film shows the source's frame at the film time k /
// fps. The film lasts the sum of its pieces, rounded to whole frames; the audio of a piece starts
// with the piece to the sample. A source without sound gives a film without sound. Unfinished files
// are written to the target's folder under other names. On failure nothing is left there.
class MovieRenderer {
  public:
    // Called once, on a thread of the renderer, after the job's memory has been released. Errors:
    // domain "Export", code 999 if canceled; domain "file", code = errno, if the target cannot be
    // written.
    using Completion = std::function<void(Result<std::filesystem::path>)>;

    virtual ~MovieRenderer() = default;
    // Fails at once if the job has less than half a frame or if its target exists.
    virtual Result<std::shared_ptr<MovieSession>> start(MovieJob job, Completion completion) = 0;
};

}  // namespace tembrix
