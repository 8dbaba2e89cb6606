#pragma once

#include <list>
#include <memory>
#include <mutex>

#include "ports/movie_renderer.h"

namespace tembrix {

class FilmRun;
class Turns;

// Renders films with the FFmpeg libraries. Every run has its own threads. Only a few runs render at
// the same time; the others wait. Destroying the renderer cancels all runs and waits for them.
class FfmpegMovieRenderer final : public MovieRenderer {
  public:
    FfmpegMovieRenderer();
    ~FfmpegMovieRenderer() override;

    Result<std::shared_ptr<MovieSession>> start(MovieJob job, Completion completion) override;

  private:
    const std::shared_ptr<Turns> turns_;
    std::mutex mutex_;
    std::list<std::shared_ptr<FilmRun>> runs_;
};

}  // namespace tembrix
