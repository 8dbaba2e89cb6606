#pragma once

#include <filesystem>
#include <functional>
#include <memory>

namespace tembrix {

// Keeps the program to one process per data folder: two would each keep a list of videos in memory
// and write it over the other's. The first holds a lock until it ends, however it ends; a later one
// asks the first to come forward. Main thread only.
class OneInstance {
  public:
    explicit OneInstance(std::filesystem::path folder);
    ~OneInstance();

    // True for the first. Otherwise false as soon as the first has answered; one that is on its way
    // out does not answer, so its end is waited for, up to `patience` seconds. Where the folder
    // takes no lock, everyone is the first.
    bool begin(double patience = 5);
    // Called in the first, from the event loop, for each later one.
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
