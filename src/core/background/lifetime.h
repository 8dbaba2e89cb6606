#pragma once

#include <stop_token>
#include <utility>

namespace tembrix {

// Lets callbacks and background work check whether the object that started them still needs them.
// The object has this as its last member. Main thread only; tokens can be checked on any thread.
class Lifetime {
  public:
    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;
    ~Lifetime() { source_.request_stop(); }

    // Stop is requested when the lifetime ends or is canceled.
    std::stop_token token() const { return source_.get_token(); }

    // Cancels everything started so far. Callbacks created afterwards are not affected.
    void cancel() { std::exchange(source_, {}).request_stop(); }

    // Wraps a callback so that it does nothing after cancellation. It must be called on the main
    // thread.
    template <class Call>
    auto guard(Call call) const {
        return [token = token(), call = std::move(call)]<class... Args>(Args&&... args) mutable {
            if (!token.stop_requested())
                call(std::forward<Args>(args)...);
        };
    }

  private:
    std::stop_source source_;
};

}  // namespace tembrix
