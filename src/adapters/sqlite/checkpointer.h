#pragma once

#include <condition_variable>
#include <cstdint>
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
    // Waits for a checkpoint that begins after this call. If nobody writes meanwhile it takes the
    // whole log, which is then begun anew.
    void wakeAndWait();

  private:
    void work();

    const std::filesystem::path file_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool due_ = false;
    bool ended_ = false;  // told to end, or unable to work
    std::uint64_t begun_ = 0;
    std::uint64_t done_ = 0;
    std::thread thread_;
};

}  // namespace tembrix::sqlite
