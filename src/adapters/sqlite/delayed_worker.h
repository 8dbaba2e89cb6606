#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tembrix::sqlite {

// Runs a piece of work on a thread of its own, a fixed time after it was first asked for. Requests
// that come meanwhile are covered by the same run.
class DelayedWorker {
  public:
    // The work returns true if it is to run again.
    DelayedWorker(std::chrono::milliseconds delay, std::function<bool()> work);
    ~DelayedWorker();  // waits for a running piece of work, but starts none
    DelayedWorker(const DelayedWorker&) = delete;
    DelayedWorker& operator=(const DelayedWorker&) = delete;

    void wake();  // any thread

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
