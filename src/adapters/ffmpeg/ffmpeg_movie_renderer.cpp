#include "adapters/ffmpeg/ffmpeg_movie_renderer.h"

extern "C" {
#include <libavutil/log.h>
}

#include <system_error>

#include "base/library_messages.h"
#include "base/result.h"

#include "adapters/ffmpeg/film_plan.h"
#include "adapters/ffmpeg/film_run.h"

namespace tembrix {

namespace {

// Two runs use the whole processor even while one of them waits. More runs would only use memory.
constexpr int atTheSameTime = 2;

Error refuse(std::string text) {
    return {"Export", -1, std::move(text)};
}

}  // namespace

FfmpegMovieRenderer::FfmpegMovieRenderer() : turns_(std::make_shared<Turns>(atTheSameTime)) {
    if (!wantsLibraryMessages())
        av_log_set_level(AV_LOG_FATAL);
}

FfmpegMovieRenderer::~FfmpegMovieRenderer() {
    for (const auto& run : runs_)
        run->cancel();
    for (const auto& run : runs_)
        run->wait();
}

Result<std::shared_ptr<MovieSession>> FfmpegMovieRenderer::start(MovieJob job,
                                                                 Completion completion) {
    std::error_code ignored;
    if (job.renderSize.width < 2 || job.renderSize.height < 2 || job.framesPerSecond < 1)
        return refuse("the film has no size");
    if (FilmPlan(job).frames() < 1)
        return refuse("the film has no frames");
    if (std::filesystem::exists(job.target, ignored))
        return refuse("there is a file of that name already: " + job.target.string());

    const std::lock_guard lock(mutex_);
    runs_.remove_if([](const auto& run) { return run->ended(); });
    const auto run = std::make_shared<FilmRun>(std::move(job), std::move(completion), turns_);
    runs_.push_back(run);
    run->begin();
    return std::static_pointer_cast<MovieSession>(run);
}

}  // namespace tembrix
