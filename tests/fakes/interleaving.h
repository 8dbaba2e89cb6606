#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <sys/types.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tembrix {

// Runs background tasks in small steps, in an order determined by a seed. Each task has its own
// thread, but only one thread runs at a time: a task runs until it reaches the next pause point.
// The fakes of the ports contain many of them. A task that waits for a lock held by a paused task
// is left waiting, and another task runs.
//
// Steps are started by resumeOne() on the thread of the test. While that thread waits for a lock
// itself, a watcher starts them instead.
class Interleaving {
  public:
    explicit Interleaving(unsigned seed)
        : random_(seed), mainThread_(::gettid()), watcher_([this] { watch(); }) {}
    Interleaving(const Interleaving&) = delete;
    Interleaving& operator=(const Interleaving&) = delete;
    ~Interleaving() {
        while (resumeOne()) {
        }
        {
            const std::lock_guard lock(mutex_);
            ended_ = true;
        }
        changed_.notify_all();
        watcher_.join();
    }

    // Adds a task. It does not run until resumeOne() selects it.
    void add(std::function<void()> task) {
        const std::lock_guard lock(mutex_);
        auto& fiber = fibers_.emplace_back(std::make_unique<Fiber>(*this));
        fiber->thread = std::thread([this, raw = fiber.get(), task = std::move(task)] {
            {
                std::unique_lock running(mutex_);
                raw->id = ::gettid();
                changed_.notify_all();
                waitForTurn(*raw, running);
            }
            current() = raw;
            task();
            const std::lock_guard done(mutex_);
            raw->state = State::finished;
            changed_.notify_all();
        });
    }

    // Runs one task up to its next pause point, or waits shortly for a task that waits for a lock.
    // Returns false if there are no tasks.
    bool resumeOne() {
        std::unique_lock lock(mutex_);
        // The thread of the test also sleeps while it joins threads, which is no waiting for a
        // lock.
        mainGivesSteps_ = true;
        const bool resumed = resume(lock);
        mainGivesSteps_ = false;
        return resumed || !fibers_.empty();
    }

    std::size_t tasks() const {
        const std::lock_guard lock(mutex_);
        return fibers_.size();
    }

    std::mt19937& random() { return random_; }

    // Called by the fakes wherever a real implementation could be interrupted.
    static void pausePoint() {
        Fiber* fiber = current();
        if (!fiber)
            return;
        std::unique_lock lock(fiber->owner.mutex_);
        fiber->state = State::paused;
        fiber->owner.changed_.notify_all();
        fiber->owner.waitForTurn(*fiber, lock);
    }
    static bool isInTask() { return current() != nullptr; }

  private:
    // A thread that sleeps at that many looks in a row waits for a lock. On a busy machine a thread
    // that was just told to run can look asleep for some milliseconds.
    static constexpr int lockChecks = 10;

    enum class State { paused, running, finished };
    struct Fiber {
        explicit Fiber(Interleaving& interleaving) : owner(interleaving) {}
        Interleaving& owner;
        State state = State::paused;
        pid_t id = 0;
        std::thread thread;
    };

    static Fiber*& current() {
        thread_local Fiber* fiber = nullptr;
        return fiber;
    }

    void waitForTurn(Fiber& fiber, std::unique_lock<std::mutex>& lock) {
        changed_.wait(lock, [&] { return fiber.state == State::running; });
    }

    bool resume(std::unique_lock<std::mutex>& lock) {
        sweep(lock);
        std::vector<Fiber*> ready;
        for (const auto& fiber : fibers_)
            if (fiber->state == State::paused)
                ready.push_back(fiber.get());
        if (ready.empty()) {
            changed_.wait_for(lock, std::chrono::milliseconds(1));
            sweep(lock);
            return false;
        }
        Fiber& chosen = *ready[random_() % ready.size()];
        changed_.wait(lock, [&] { return chosen.id != 0; });
        chosen.state = State::running;
        changed_.notify_all();
        int asleep = 0;
        while (asleep < lockChecks && !changed_.wait_for(lock, std::chrono::milliseconds(2), [&] {
            return chosen.state != State::running;
        }))
            asleep = waitsForLock(chosen.id) ? asleep + 1 : 0;
        sweep(lock);
        return true;
    }

    // Joins the threads of finished tasks.
    void sweep(std::unique_lock<std::mutex>& lock) {
        for (auto fiber = fibers_.begin(); fiber != fibers_.end();) {
            if ((*fiber)->state != State::finished) {
                ++fiber;
                continue;
            }
            auto finished = std::move(*fiber);
            fibers_.erase(fiber);
            lock.unlock();
            finished->thread.join();
            lock.lock();
            fiber = fibers_.begin();
        }
    }

    // Whether the operating system reports the thread as sleeping; before a pause point, it must be
    // waiting for a lock.
    static bool waitsForLock(pid_t id) {
        const std::string name = "/proc/self/task/" + std::to_string(id) + "/stat";
        std::FILE* file = std::fopen(name.c_str(), "r");
        if (!file)
            return false;
        char state = '?';
        const int read = std::fscanf(file, "%*d (%*[^)]) %c", &state);
        std::fclose(file);
        return read == 1 && state == 'S';
    }

    void watch() {
        std::unique_lock lock(mutex_);
        int asleep = 0;
        while (!ended_) {
            // Looks are that far apart, however many steps are made in between.
            changed_.wait_for(lock, std::chrono::milliseconds(5), [&] { return ended_; });
            const bool mainWaits =
                !fibers_.empty() && !mainGivesSteps_ && waitsForLock(mainThread_);
            asleep = mainWaits ? asleep + 1 : 0;
            if (asleep < 3 || ended_)
                continue;
            asleep = 0;
            for (const auto& fiber : fibers_)
                if (fiber->state == State::paused && fiber->id != 0) {
                    fiber->state = State::running;
                    changed_.notify_all();
                    break;
                }
        }
    }

    std::mt19937 random_;
    const pid_t mainThread_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::list<std::unique_ptr<Fiber>> fibers_;
    bool mainGivesSteps_ = false;
    bool ended_ = false;
    std::thread watcher_;
};

}  // namespace tembrix
