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

// A still picture fitted whole and centerd on black, silent.
struct StillPiece {
    ImageBuffer image;
    double duration = 0;
};

// A picture blended over the film from `start` for `duration` seconds of the film. Placed by its
// top left corner in pixels of the render size. A film of many cuts gives `paint` in place of the
// image, so that no more pictures are held than show: it is called once, on a thread of the
// renderer's, shortly before the overlay shows. It may give an empty picture, which shows nothing.
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
    virtual void cancel() = 0;           // ends the run within a second
};

// Renders jobs to H.264 and AAC. Frame k of the film shows the source's frame at the film time k /
// fps; a film lasts the sum of its pieces to the frame; audio starts with its piece to the sample.
// A source without sound gives a film without sound. Nothing stays at the target unless the run
// succeeds.
class MovieRenderer {
  public:
    // Called once, on a thread of the renderer's. Errors: domain "Export", code 999 when canceled;
    // domain "file", code = errno, where the target cannot be written.
    using Completion = std::function<void(Result<std::filesystem::path>)>;

    virtual ~MovieRenderer() = default;
    virtual Result<std::shared_ptr<MovieSession>> start(MovieJob job, Completion completion) = 0;
};

}  // namespace tembrix
