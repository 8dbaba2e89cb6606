#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace tembrix {

// Allows one process per data folder, because two processes would overwrite each other's list of
// videos. The first process holds a lock until it ends. A later one asks the first to show its
// window. Main thread only.
class OneInstance {
  public:
    explicit OneInstance(std::filesystem::path folder);
    ~OneInstance();

    // Returns true in the first process. In a later one, returns false as soon as the first has
    // answered. A first process that is exiting does not answer; its end is awaited for up to
    // `patience` seconds. If the folder does not support locks, every process is treated as the
    // first.
    bool begin(double patience = 5);
    // Sets the function that the first process calls from its event loop for each later process.
    void setAsked(std::function<void()> asked);
    void stopAnswering();

  private:
    class Server;
    bool takeLock();
    bool firstAnswers() const;

    std::filesystem::path folder_;
    int lock_ = -1;
    std::unique_ptr<Server> server_;
};

}  // namespace tembrix
