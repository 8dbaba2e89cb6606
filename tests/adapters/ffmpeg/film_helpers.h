#pragma once

#include <chrono>
#include <cmath>
#include <filesystem>
#include <future>
#include <memory>
#include <vector>

#include "ports/movie_renderer.h"

#include "fixtures/match_video.h"

namespace tembrix {

// Starts a job and waits for its end.
inline Result<std::filesystem::path> renderAndWait(MovieRenderer& renderer, MovieJob job) {
    auto end = std::make_shared<std::promise<Result<std::filesystem::path>>>();
    auto future = end->get_future();
    auto started = renderer.start(std::move(job), [end](auto result) { end->set_value(result); });
    if (!started)
        return started.error();
    return future.get();
}

// The frame numbers that a film of a match video must show, computed in whole 1/600 seconds.
// `still` is the number used for still pictures.
inline std::vector<int> expectedNumbers(const MovieJob& job, const MatchVideo& video, int still,
                                        double skipped = 0) {
    struct Span {
        long start, end;
        double source;
    };
    std::vector<Span> spans;
    long end = 0;
    for (const auto& piece : job.pieces) {
        const auto* source = std::get_if<SourcePiece>(&piece);
        const double duration = std::visit([](const auto& p) { return p.duration; }, piece);
        const long start = end;
        end += std::lround(duration * 600);
        spans.push_back({start, end, source ? source->start + skipped : -1.0});
    }
    std::vector<int> numbers;
    const long frames = std::lround(static_cast<double>(end) / 20);
    for (long k = 0; k < frames; ++k) {
        const long tick = k * 20;
        const Span* span = &spans.back();
        for (const auto& candidate : spans)
            if (candidate.start <= tick && tick < candidate.end)
                span = &candidate;
        const double time = span->source + static_cast<double>(tick - span->start) / 600;
        numbers.push_back(span->source < 0 ? still : video.frameAt(time));
    }
    return numbers;
}

}  // namespace tembrix
