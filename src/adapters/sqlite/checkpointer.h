#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <thread>

namespace tembrix::sqlite {

// Copies the write-ahead log of a database back into it, on its own thread and connection, so that
// no caller waits for the disk to sync.
class Checkpointer {
  public:
    explicit Checkpointer(const std::filesystem::path& file);
    ~Checkpointer();  // waits for a running checkpoint

    void wake();  // may be called on any thread
    // Waits for a checkpoint that starts after this call. If there are no writes meanwhile, it
    // copies the whole log, which is then restarted.
    void wakeAndWait();

  private:
    void work();

    const std::filesystem::path file_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool due_ = false;
    bool ended_ = false;  // destruction was requested, or the database cannot be opened
    std::uint64_t begun_ = 0;
    std::uint64_t done_ = 0;
    std::thread thread_;
};

}  // namespace tembrix::sqlite
