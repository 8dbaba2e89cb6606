#pragma once

#include <stop_token>
#include <utility>

namespace tembrix {

// Tells callbacks and background work whether the object that started them still wants them. An
// object has one as its last member. Main thread only; its tokens can be asked on any thread.
class Lifetime {
  public:
    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;
    ~Lifetime() { source_.request_stop(); }

    // Stop is requested when the lifetime ends or is canceled.
    std::stop_token token() const { return source_.get_token(); }

    // Ends what was started so far. What is started afterwards is not affected.
    void cancel() { std::exchange(source_, {}).request_stop(); }

    // A callback that does nothing once it is no longer wanted. Call it on the main thread.
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
