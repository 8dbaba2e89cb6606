#include "adapters/ffmpeg/film_plan.h"

#include <algorithm>
#include <cmath>

#include "ports/media.h"

namespace tembrix {

namespace {

double wholeTicks(double seconds) {
    return std::round(seconds * mediaTimescale) / mediaTimescale;
}

}  // namespace

FilmPlan::FilmPlan(const MovieJob& job) : framesPerSecond_(job.framesPerSecond) {
    double end = 0;
    for (const auto& piece : job.pieces) {
        Piece planned;
        planned.start = wholeTicks(end);
        if (const auto* source = std::get_if<SourcePiece>(&piece)) {
            planned.sourceStart = source->start;
            planned.sourceEnd = source->start + source->duration;
        }
        pieces_.push_back(planned);
        end += std::visit([](const auto& p) { return p.duration; }, piece);
    }
    for (const auto& overlay : job.overlays)
        overlays_.push_back({overlay.start, overlay.start + overlay.duration});
    duration_ = wholeTicks(end);
    frames_ = static_cast<int>(std::lround(duration_ * framesPerSecond_));
}

std::size_t FilmPlan::pieceAt(int frame) const {
    const double bound = filmTime(frame) + frameTolerance;
    const auto later = std::upper_bound(pieces_.begin(), pieces_.end(), bound,
                                        [](double t, const Piece& p) { return t < p.start; });
    return static_cast<std::size_t>(later - pieces_.begin()) - 1;
}

double FilmPlan::sourceTime(std::size_t piece, int frame) const {
    const Piece& p = pieces_[piece];
    const double time = p.sourceStart + filmTime(frame) - p.start;
    return std::clamp(time, p.sourceStart,
                      std::max(p.sourceStart, p.sourceEnd - 1 / mediaTimescale));
}

std::vector<std::size_t> FilmPlan::overlaysAt(int frame) const {
    const double bound = filmTime(frame) + frameTolerance;
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < overlays_.size(); ++i)
        if (overlays_[i].start <= bound && bound < overlays_[i].end)
            found.push_back(i);
    return found;
}

std::int64_t FilmPlan::firstSample(std::size_t piece, int sampleRate) const {
    const double start = piece < pieces_.size() ? pieces_[piece].start : duration_;
    return std::llround(start * sampleRate);
}

}  // namespace tembrix
