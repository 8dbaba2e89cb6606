#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/date.h"

namespace tembrix {

// A pending timer. Destroying it cancels it, so that an owner that has its timers as members is not
// called after its destruction.
class Timer {
  public:
    virtual ~Timer() = default;
};

// Runs tasks in the background one after the other, in the order given.
class SerialQueue {
  public:
    virtual ~SerialQueue() = default;
    virtual void async(std::function<void()> task) = 0;
};

enum class Priority { utility, userInitiated };

// Provides time and threads. Tests use a virtual scheduler.
class Scheduler {
  public:
    using Task = std::function<void()>;

    virtual ~Scheduler() = default;

    virtual Date now() const = 0;          // wall clock
    virtual double monotonic() const = 0;  // seconds, never set back

    virtual bool isMain() const = 0;
    virtual void onMain(Task task) = 0;  // asynchronous, in order; from any thread
    // Runs the task on the main thread and waits for it; runs it directly if already there.
    virtual void onMainAndWait(Task task) = 0;

    // Called on the main thread only; the task runs there.
    [[nodiscard]] virtual std::unique_ptr<Timer> after(double seconds, Task task) = 0;
    [[nodiscard]] virtual std::unique_ptr<Timer> every(double seconds, Task task) = 0;

    virtual void background(Priority priority, Task task) = 0;
    virtual std::shared_ptr<SerialQueue> serialQueue(const std::string& label) = 0;
};

}  // namespace tembrix
