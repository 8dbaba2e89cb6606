#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ports/movie_renderer.h"

namespace tembrix {

// Which picture and which sound belong to each moment of a film. Pieces begin at whole 1/600
// seconds counted from the start of the film, so that rounding errors do not add up; the film is
// rounded to frames once.
class FilmPlan {
  public:
    explicit FilmPlan(const MovieJob& job);

    int frames() const { return frames_; }
    // The piece that a frame of the film shows, as an index into the pieces of the job.
    std::size_t pieceAt(int frame) const;
    // The time in the source that a frame shows; for source pieces only.
    double sourceTime(std::size_t piece, int frame) const;
    // The overlays of a frame, lowest first, as indices into the overlays of the job.
    std::vector<std::size_t> overlaysAt(int frame) const;

    // The first sample of a piece's sound. For the index after the last piece, it is the length of
    // the film.
    std::int64_t firstSample(std::size_t piece, int sampleRate) const;

  private:
    double filmTime(int frame) const { return static_cast<double>(frame) / framesPerSecond_; }

    struct Piece {
        double sourceStart = 0;
        double sourceEnd = 0;
        double start = 0;  // seconds of the film
    };
    struct Span {
        double start = 0;
        double end = 0;
    };
    std::vector<Piece> pieces_;
    std::vector<Span> overlays_;
    double duration_ = 0;
    int framesPerSecond_ = 30;
    int frames_ = 0;
};

}  // namespace tembrix
