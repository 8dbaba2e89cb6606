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

// A still picture without sound, scaled to fit and centered on black. A film of many stills sets
// `load` instead of the image, so that only the visible one uses memory. It is called on a thread
// of the renderer. An empty picture is shown as black.
struct StillPiece {
    ImageBuffer image;
    double duration = 0;
    std::function<ImageBuffer()> load;  // used if `image` is empty
};

// A picture blended over the film from `start` for `duration` seconds of the film. Its position is
// given by its top left corner in pixels of the render size. A film of many cuts sets `paint`
// instead of the image, so that only visible pictures use memory. It is called once, on a thread of
// the renderer, shortly before the overlay appears. An empty picture shows nothing.
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

// A film being rendered. Thread-safe.
class MovieSession {
  public:
    virtual ~MovieSession() = default;
    virtual float progress() const = 0;  // 0 to 1
    virtual void cancel() = 0;           // the run ends within a second
};

// Renders jobs to H.264 and AAC. Frame k of the film shows the frame of the source at the film time
// k / fps. The length of the film is the sum of its pieces, rounded to whole frames. The sound of a
// piece starts at the exact sample of its start. A source without sound results in a film without
// sound. Temporary files in the target's folder have other names and are removed on failure.
class MovieRenderer {
  public:
    // Called once, on a thread of the renderer, after the memory of the job has been released.
    // Errors: domain "Export", code 999 if canceled; domain "file", code = errno, if the target
    // cannot be written.
    using Completion = std::function<void(Result<std::filesystem::path>)>;

    virtual ~MovieRenderer() = default;
    // Fails immediately if the job is shorter than half a frame or if its target exists.
    virtual Result<std::shared_ptr<MovieSession>> start(MovieJob job, Completion completion) = 0;
};

}  // namespace tembrix
