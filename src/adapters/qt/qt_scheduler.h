#pragma once

#include <QObject>
#include <atomic>
#include <cstdint>
#include <memory>

#include "base/date.h"

#include "ports/scheduler.h"

namespace tembrix {

// The scheduler on the event loop of the thread that makes it, which is the main thread, and on
// thread pools. Destroying it drops what waits for the main thread and ends all calls into it; work
// that is running is given two seconds, unless drain() came before.
class QtScheduler final : public Scheduler {
  public:
    QtScheduler();
    ~QtScheduler() override;

    Date now() const override;
    double monotonic() const override;

    bool isMain() const override;
    void onMain(Task task) override;
    // Returns without having run the task only if the scheduler is destroyed meanwhile.
    void onMainAndWait(Task task) override;

    std::unique_ptr<Timer> after(double seconds, Task task) override;
    std::unique_ptr<Timer> every(double seconds, Task task) override;

    void background(Priority priority, Task task) override;
    std::shared_ptr<SerialQueue> serialQueue(const std::string& label) override;

    // For the end of the program, on the main thread: gives background work up to `seconds` to end,
    // and runs what it hands to the main thread. Work that has not begun by then is dropped. True
    // if everything has ended; otherwise threads are still running and the process should end
    // without waiting for them.
    bool drain(double seconds);

  private:
    // Outlives the scheduler where a thread does not come to its end.
    struct Pools;
    class Queue;

    QObject main_;
    std::shared_ptr<Pools> pools_;
    std::atomic<std::uint64_t> handedOver_{0};  // tasks for the main thread, ever
    bool drained_ = false;
};

}  // namespace tembrix
