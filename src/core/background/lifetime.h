#pragma once

#include <mutex>
#include <stop_token>
#include <utility>

namespace tembrix {

// Lets callbacks and background work check whether the object that started them still needs them.
// The object has this as its last member. It is canceled and destroyed on the main thread, where
// the callbacks run; the rest may be called on any thread.
class Lifetime {
  public:
    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;
    ~Lifetime() { source_.request_stop(); }

    // Stop is requested when the lifetime ends or is canceled.
    std::stop_token token() const {
        const std::lock_guard lock(mutex_);
        return source_.get_token();
    }

    // Cancels everything started so far. Callbacks created afterwards are not affected.
    void cancel() {
        std::stop_source ended;
        {
            const std::lock_guard lock(mutex_);
            std::swap(ended, source_);
        }
        ended.request_stop();
    }

    // Wraps a callback so that it does nothing after cancellation.
    template <class Call>
    auto guard(Call call) const {
        return [token = token(), call = std::move(call)]<class... Args>(Args&&... args) mutable {
            if (!token.stop_requested())
                call(std::forward<Args>(args)...);
        };
    }

  private:
    mutable std::mutex mutex_;
    std::stop_source source_;
};

}  // namespace tembrix
