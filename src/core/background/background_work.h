#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <variant>

#include "ports/scheduler.h"

#include "core/background/lifetime.h"

namespace tembrix {

// Runs background work for one object, which has this as its last member. It is canceled and
// destroyed on the main thread; work and callbacks may be started on any thread.
//
// Work is a function that uses only copies. It must not use its owner, unless the owner calls
// cancelAndWait() in its destructor. It may accept a std::stop_token and end early when stop is
// requested. Its result is passed to `done` on the main thread. After cancellation, which the
// destructor implies, work that has not started is not run, and `done` is not called.
//
// The captures of `work` are destroyed in the background before `done` is called. `done`, its
// captures and the result are destroyed on the main thread. Values that share data with the main
// thread (Cow) must therefore be captured by `done` or be part of the result.
class BackgroundWork {
  public:
    explicit BackgroundWork(Scheduler& scheduler) : scheduler_(scheduler) {}

    template <class Work, class Done>
    void run(Priority priority, Work work, Done done) {
        scheduler_.background(priority, task(std::move(work), std::move(done)));
    }
    template <class Work>
    void run(Priority priority, Work work) {
        run(priority, std::move(work), [] {});
    }
    template <class Work, class Done>
    void run(SerialQueue& queue, Work work, Done done) {
        queue.async(task(std::move(work), std::move(done)));
    }

    // Runs a step later on the main thread, unless it is canceled.
    template <class Step>
    void onMain(Step step) {
        scheduler_.onMain(lifetime_.guard(std::move(step)));
    }
    // Wraps a callback for another service, such as a file panel; see Lifetime.
    template <class Call>
    auto guard(Call call) const {
        return lifetime_.guard(std::move(call));
    }
    std::stop_token token() const { return lifetime_.token(); }

    // Cancels everything started so far. Work started afterwards is not affected.
    void cancel() { lifetime_.cancel(); }
    // Cancels and waits until no work is running. The work must not wait for the main thread.
    void cancelAndWait() {
        cancel();
        const std::unique_lock idle(*running_);
    }

    // Destroys a large value in the background. It must not share data with the main thread.
    template <class T>
    void release(T value) {
        const auto held = std::make_shared<std::optional<T>>(std::move(value));
        scheduler_.background(Priority::utility, [held] { held->reset(); });
    }

  private:
    template <class Work>
    static decltype(auto) call(Work& work, const std::stop_token& stop) {
        if constexpr (std::is_invocable_v<Work&, std::stop_token>)
            return work(stop);
        else
            return work();
    }

    template <class Work, class Done>
    Scheduler::Task task(Work work, Done done) {
        using Value = decltype(call(work, std::stop_token()));
        constexpr bool hasValue = !std::is_void_v<Value>;
        using Kept = std::conditional_t<hasValue, Value, std::monostate>;
        struct Job {
            std::optional<Work> work;
            std::shared_ptr<Done> done;
        };
        const auto job =
            std::make_shared<Job>(std::move(work), std::make_shared<Done>(std::move(done)));
        return [job, stop = token(), running = running_, &scheduler = scheduler_] {
            auto result = std::make_shared<std::optional<Kept>>();
            {
                const std::shared_lock lock(*running);
                if (stop.stop_requested()) {
                    // Canceled: neither the work nor `done` is called.
                } else if constexpr (hasValue) {
                    result->emplace(call(*job->work, stop));
                } else {
                    call(*job->work, stop);
                    result->emplace();
                }
                job->work.reset();
            }
            scheduler.onMain([stop, done = std::move(job->done), result = std::move(result)] {
                if (stop.stop_requested() || !*result)
                    return;
                if constexpr (hasValue)
                    (*done)(std::move(**result));
                else
                    (*done)();
            });
        };
    }

    Scheduler& scheduler_;
    std::shared_ptr<std::shared_mutex> running_ = std::make_shared<std::shared_mutex>();
    Lifetime lifetime_;
};

}  // namespace tembrix
