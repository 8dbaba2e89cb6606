#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/result.h"

#include "ports/movie_renderer.h"
#include "ports/scheduler.h"

#include "core/background/lifetime.h"

namespace tembrix {

// Renders jobs in their order, a few at the same time. A failed job does not stop the others. Main
// thread only. Destroying it cancels the jobs without calling back.
class RenderQueue {
  public:
    // Two sessions use two cores fully; more sessions would only use more memory.
    static constexpr int sessionsAtOnce = 2;

    struct Ending {
        std::vector<std::filesystem::path> films;  // in the order of their jobs
        std::optional<Error> lastError;            // of a job that was not canceled
    };

    RenderQueue(MovieRenderer& renderer, Scheduler& scheduler);
    ~RenderQueue();
    RenderQueue(const RenderQueue&) = delete;
    RenderQueue& operator=(const RenderQueue&) = delete;

    // `jobEnded` is called after each session, `allEnded` once at the end.
    void start(std::vector<MovieJob> jobs, std::function<void()> jobEnded,
               std::function<void(const Ending&)> allEnded);
    // Starts no further session; `allEnded` is called once the running ones have ended.
    void cancel();

    int ended() const { return ended_; }  // number of sessions that have ended for any reason
    std::optional<float> sessionProgress() const;  // of the first running session

  private:
    void startNext();
    Result<std::shared_ptr<MovieSession>> startSession(std::size_t place);
    void sessionEnded(std::size_t place, const Result<std::filesystem::path>& result);

    MovieRenderer& renderer_;
    Scheduler& scheduler_;
    std::vector<MovieJob> jobs_;
    std::function<void()> jobEnded_;
    std::function<void(const Ending&)> allEnded_;
    std::size_t next_ = 0;
    int running_ = 0;
    int ended_ = 0;
    bool canceled_ = false;
    std::vector<std::shared_ptr<MovieSession>> sessions_;      // by index of the job
    std::vector<std::optional<std::filesystem::path>> films_;  // by index of the job
    std::optional<Error> lastError_;
    Lifetime lifetime_;
};

}  // namespace tembrix
