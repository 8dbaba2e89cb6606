#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "ports/movie_renderer.h"

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/film_canvas.h"
#include "adapters/ffmpeg/film_plan.h"
#include "adapters/ffmpeg/film_writer.h"
#include "adapters/ffmpeg/frame_reader.h"
#include "adapters/ffmpeg/frame_times.h"
#include "adapters/ffmpeg/overlay_blend.h"

namespace tembrix {

// The pictures of a film, in order, as the encoder receives them. Must be used on one thread.
class FilmPictures {
  public:
    // The job and the plan must outlive the pictures. Once `stop` is true, next() fails.
    static Result<std::unique_ptr<FilmPictures>> open(const MovieJob& job, const FilmPlan& plan,
                                                      const std::atomic<bool>& stop);

    // The size and the colors of the pictures. They are those of the source.
    FilmFormat format() const;
    bool sourceHasAudio() const { return file_.source->info().hasAudio; }

    // The next frame of the film. Frames may share their pixels and must not be written to.
    Result<FrameHandle> next();

  private:
    FilmPictures(const MovieJob& job, const FilmPlan& plan) : job_(job), plan_(plan) {}
    // The picture of the next frame without overlays, or null if it is the same as that of the
    // previous frame.
    Result<FrameHandle> base(std::size_t piece);
    const OverlayBlend& blend(std::size_t overlay);

    const MovieJob& job_;
    const FilmPlan& plan_;
    VideoFile file_;
    std::unique_ptr<FrameReader> reader_;
    std::unique_ptr<FilmCanvas> canvas_;
    std::vector<std::unique_ptr<OverlayBlend>> blends_;  // created on first use
    int frame_ = 0;
    // The content of the previous frame.
    std::size_t shownPiece_ = SIZE_MAX;
    double shownStart_ = -1;
    std::vector<std::size_t> shownOverlays_;
    FrameHandle plain_ = newFrame();
    FrameHandle composed_ = newFrame();
};

}  // namespace tembrix
