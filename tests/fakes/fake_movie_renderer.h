#pragma once

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "ports/movie_renderer.h"
#include "ports/scheduler.h"

namespace tembrix {

// Accepts jobs and ends them on request of the test. Completions are called in the scheduler's
// background, because a real renderer uses its own threads.
class FakeMovieRenderer final : public MovieRenderer {
  public:
    class Session final : public MovieSession {
      public:
        Session(Scheduler& scheduler, MovieJob work, Completion completion)
            : job(std::move(work)), scheduler_(scheduler), completion_(std::move(completion)) {}

        const MovieJob job;

        float progress() const override { return progress_; }
        void cancel() override {
            if (completion_)
                canceled_ = true;
            end(Error{"Export", 999, "Canceled"});
        }
        bool canceled() const { return canceled_; }
        bool ended() const { return !completion_; }

        void setProgress(float value) { progress_ = value; }
        // Writes a small file to the target and ends the run.
        void succeed() {
            if (ended())
                return;
            std::ofstream(job.target, std::ios::binary) << "film";
            progress_ = 1;
            end(job.target);
        }
        void fail(Error error) { end(std::move(error)); }

      private:
        void end(Result<std::filesystem::path> result) {
            if (auto completion = std::exchange(completion_, nullptr))
                scheduler_.background(Priority::userInitiated,
                                      [completion, result] { completion(result); });
        }

        Scheduler& scheduler_;
        Completion completion_;
        float progress_ = 0;
        bool canceled_ = false;
    };

    explicit FakeMovieRenderer(Scheduler& scheduler) : scheduler_(scheduler) {}

    std::vector<std::shared_ptr<Session>> sessions;  // all runs so far, in order
    std::optional<Error> startError;                 // returned by start() if set
    std::optional<Error> runError;  // the result of runs with endAtOnce; success if absent
    bool endAtOnce = false;         // runs end by themselves

    Result<std::shared_ptr<MovieSession>> start(MovieJob job, Completion completion) override {
        if (startError)
            return *startError;
        double duration = 0;
        for (const auto& piece : job.pieces)
            duration += std::visit([](const auto& p) { return p.duration; }, piece);
        constexpr double ticks = 600;  // a second, as films are cut
        if (std::lround(std::round(duration * ticks) / ticks * job.framesPerSecond) < 1)
            return Error{"Export", -1, "The film has no frames"};
        if (std::filesystem::exists(job.target))
            return Error{"Export", -1, "The target exists: " + job.target.string()};
        sessions.push_back(
            std::make_shared<Session>(scheduler_, std::move(job), std::move(completion)));
        if (endAtOnce)
            runError ? sessions.back()->fail(*runError) : sessions.back()->succeed();
        return std::static_pointer_cast<MovieSession>(sessions.back());
    }

  private:
    Scheduler& scheduler_;
};

}  // namespace tembrix
