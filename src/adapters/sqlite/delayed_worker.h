#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tembrix::sqlite {

// Runs a function on its own thread, a fixed time after the first request. Requests made before the
// run starts are covered by it.
class DelayedWorker {
  public:
    // `work` returns true to be run again.
    DelayedWorker(std::chrono::milliseconds delay, std::function<bool()> work);
    ~DelayedWorker();  // waits for a running call, but starts none
    DelayedWorker(const DelayedWorker&) = delete;
    DelayedWorker& operator=(const DelayedWorker&) = delete;

    void wake();  // may be called on any thread

  private:
    void run();

    const std::chrono::milliseconds delay_;
    const std::function<bool()> work_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool due_ = false;
    bool ended_ = false;
    std::thread thread_;
};

}  // namespace tembrix::sqlite
