#pragma once

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

namespace tembrix::sqlite {

// Copies the write-ahead log of a database back into it, on a thread and a connection of its own,
// so that no caller ever waits for a disk to sync.
class Checkpointer {
  public:
    explicit Checkpointer(const std::filesystem::path& file);
    ~Checkpointer();  // waits for a running checkpoint

    void wake();  // any thread

  private:
    void work();

    const std::filesystem::path file_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool due_ = false;
    bool ended_ = false;
    std::thread thread_;
};

}  // namespace tembrix::sqlite
