#pragma once

#include <QObject>
#include <atomic>
#include <cstdint>
#include <memory>

#include "base/date.h"

#include "ports/scheduler.h"

namespace tembrix {

// The scheduler of the program, based on thread pools and on the event loop of the thread that
// creates it, which is the main thread. Its destructor discards tasks for the main thread and waits
// up to two seconds for running work, unless drain() was called before.
class QtScheduler final : public Scheduler {
  public:
    QtScheduler();
    ~QtScheduler() override;

    Date now() const override;
    double monotonic() const override;

    bool isMain() const override;
    void onMain(Task task) override;
    // Returns without running the task only if the scheduler is destroyed meanwhile.
    void onMainAndWait(Task task) override;

    std::unique_ptr<Timer> after(double seconds, Task task) override;
    std::unique_ptr<Timer> every(double seconds, Task task) override;

    void background(Priority priority, Task task) override;
    std::shared_ptr<SerialQueue> serialQueue(const std::string& label) override;

    // Called at the end of the program on the main thread. Waits up to `seconds` for background
    // work and runs the tasks that it posts to the main thread. Work that has not started by then
    // is discarded. Returns true if everything has ended; otherwise threads are still running, and
    // the process should exit without waiting for them.
    bool drain(double seconds);

  private:
    // Outlives the scheduler if a thread does not end.
    struct Pools;
    class Queue;

    QObject main_;
    std::shared_ptr<Pools> pools_;
    std::atomic<std::uint64_t> handedOver_{0};  // number of tasks posted to the main thread so far
    bool drained_ = false;
};

}  // namespace tembrix
