#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace tembrix {

// Ends the process if this object still exists after the given time. Guards the end of the program
// against threads that wait for a dead network drive.
class ExitDeadline {
  public:
    explicit ExitDeadline(std::chrono::milliseconds time)
        : thread_([this, time] {
              std::unique_lock lock(mutex_);
              if (!changed_.wait_for(lock, time, [this] { return met_; }))
                  std::_Exit(EXIT_SUCCESS);
          }) {}
    ~ExitDeadline() {
        {
            const std::lock_guard lock(mutex_);
            met_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    ExitDeadline(const ExitDeadline&) = delete;
    ExitDeadline& operator=(const ExitDeadline&) = delete;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool met_ = false;
    std::thread thread_;
};

}  // namespace tembrix
