#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "ports/scheduler.h"

#include "fakes/interleaving.h"

namespace tembrix {

// A scheduler whose time is advanced by the test. Main, background and serial-queue tasks are kept
// in one queue and run inside run() and advance() on the thread of the test; isMain() returns false
// inside background tasks nevertheless. Tasks may be added from other threads.
//
// Without interleave(), each task runs as a whole, in the order in which tasks were added. With it,
// background tasks run in steps, mixed with one another and with main tasks.
class VirtualScheduler final : public Scheduler {
  public:
    Date now() const override { return {state_->wall + state_->time}; }
    double monotonic() const override { return state_->time; }
    // Sets the wall clock only. Timers use monotonic time, as on a real machine.
    void setWallClock(Date date) { state_->wall = date.secondsSince1970 - state_->time; }

    // Interleaves background tasks from now on, in an order determined by the seed.
    void interleave(unsigned seed) { interleaving_ = std::make_unique<Interleaving>(seed); }

    // Stops interleaving. Tasks that were started are finished first.
    void runWhole() { interleaving_.reset(); }

    bool isMain() const override { return std::this_thread::get_id() == thread_ && !inBackground_; }
    void onMain(Task task) override { push(Lane::main, std::move(task)); }
    void onMainAndWait(Task task) override {
        if (isMain())
            return task();
        if (Interleaving::isInTask())
            return waitForMain(task);
        // The main thread first runs the tasks that were posted before.
        while (auto earlier = takeMain())
            runAs(Lane::main, earlier);
        runAs(Lane::main, task);
    }

    std::unique_ptr<Timer> after(double seconds, Task task) override {
        return addTimer(seconds, 0, std::move(task));
    }
    std::unique_ptr<Timer> every(double seconds, Task task) override {
        const double interval = std::max(seconds, 0.001);
        return addTimer(interval, interval, std::move(task));
    }

    void background(Priority, Task task) override {
        if (interleaving_)
            interleaving_->add(std::move(task));
        else
            push(Lane::background, std::move(task));
    }
    std::shared_ptr<SerialQueue> serialQueue(const std::string&) override {
        return std::make_shared<Queue>(*this);
    }

    // Runs the next task or due timer. Returns false if there is none.
    bool step() {
        if (interleaving_ && interleaving_->tasks() > 0 && interleaving_->random()() % 4 != 0 &&
            interleaving_->resumeOne())
            return true;
        if (auto entry = take()) {
            runAs(entry->first, entry->second);
            return true;
        }
        if (interleaving_ && interleaving_->tasks() > 0 && interleaving_->resumeOne())
            return true;
        return fireDue(state_->time);
    }
    // Runs all due tasks, including those they add.
    void run() {
        while (step()) {
        }
    }
    // Advances the time: runs due tasks, then each timer at its time with the tasks it adds.
    void advance(double seconds) {
        const double end = state_->time + seconds;
        do
            run();
        while (fireDue(end));
        state_->time = end;
    }

    std::size_t pendingTasks() const {
        const std::lock_guard lock(mutex_);
        return queue_.size();
    }
    std::size_t pendingTimers() const { return state_->timers.size(); }

  private:
    enum class Lane { main, background };
    struct Entry {
        double interval = 0;  // 0 for a one-shot timer
        std::shared_ptr<Task> task;
    };
    using Order = std::pair<double, std::uint64_t>;  // due time, then order of creation
    struct State {
        double wall = 1714564800;  // 2024-05-01 12:00:00 UTC
        double time = 0;
        std::uint64_t next = 0;
        std::map<Order, Entry> timers;
    };
    class Handle final : public Timer {
      public:
        Handle(std::weak_ptr<State> state, std::shared_ptr<Task> task)
            : state_(std::move(state)), task_(std::move(task)) {}
        ~Handle() override {
            if (const auto state = state_.lock())
                std::erase_if(state->timers,
                              [&](const auto& entry) { return entry.second.task == task_; });
        }

      private:
        std::weak_ptr<State> state_;
        std::shared_ptr<Task> task_;
    };
    class Queue final : public SerialQueue {
      public:
        explicit Queue(VirtualScheduler& owner) : owner_(owner) {}
        void async(std::function<void()> task) override {
            if (!owner_.interleaving_)
                return owner_.push(Lane::background, std::move(task));
            {
                const std::lock_guard lock(waiting_->mutex);
                waiting_->tasks.push_back(std::move(task));
                if (std::exchange(waiting_->running, true))
                    return;
            }
            owner_.interleaving_->add([waiting = waiting_] {
                while (auto next = waiting->take())
                    next();
            });
        }

      private:
        struct Waiting {
            std::mutex mutex;
            std::deque<Task> tasks;
            bool running = false;

            Task take() {
                const std::lock_guard lock(mutex);
                if (tasks.empty()) {
                    running = false;
                    return {};
                }
                auto task = std::move(tasks.front());
                tasks.pop_front();
                return task;
            }
        };
        VirtualScheduler& owner_;
        std::shared_ptr<Waiting> waiting_ = std::make_shared<Waiting>();
    };

    void waitForMain(const Task& task) {
        std::atomic<bool> done = false;
        push(Lane::main, [&] {
            task();
            done = true;
        });
        while (!done)
            Interleaving::pausePoint();
    }

    void push(Lane lane, Task task) {
        const std::lock_guard lock(mutex_);
        queue_.emplace_back(lane, std::move(task));
    }
    std::optional<std::pair<Lane, Task>> take() {
        const std::lock_guard lock(mutex_);
        if (queue_.empty())
            return std::nullopt;
        auto entry = std::move(queue_.front());
        queue_.pop_front();
        return entry;
    }
    Task takeMain() {
        const std::lock_guard lock(mutex_);
        const auto found = std::find_if(queue_.begin(), queue_.end(), [](const auto& entry) {
            return entry.first == Lane::main;
        });
        if (found == queue_.end())
            return {};
        auto task = std::move(found->second);
        queue_.erase(found);
        return task;
    }
    void runAs(Lane lane, const Task& task) {
        const bool before = std::exchange(inBackground_, lane == Lane::background);
        task();
        inBackground_ = before;
    }
    std::unique_ptr<Timer> addTimer(double seconds, double interval, Task task) {
        auto shared = std::make_shared<Task>(std::move(task));
        state_->timers.emplace(Order{state_->time + std::max(seconds, 0.0), state_->next++},
                               Entry{interval, shared});
        return std::make_unique<Handle>(state_, std::move(shared));
    }
    bool fireDue(double limit) {
        auto& timers = state_->timers;
        if (timers.empty() || timers.begin()->first.first > limit)
            return false;
        auto node = timers.extract(timers.begin());
        const auto entry = node.mapped();
        state_->time = std::max(state_->time, node.key().first);
        if (entry.interval > 0)
            timers.emplace(Order{node.key().first + entry.interval, state_->next++}, entry);
        runAs(Lane::main, *entry.task);
        return true;
    }

    const std::thread::id thread_ = std::this_thread::get_id();
    bool inBackground_ = false;
    mutable std::mutex mutex_;
    std::deque<std::pair<Lane, Task>> queue_;
    std::shared_ptr<State> state_ = std::make_shared<State>();
    std::unique_ptr<Interleaving> interleaving_;  // last, so that its tasks end first
};

}  // namespace tembrix
