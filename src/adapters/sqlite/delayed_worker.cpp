#include "adapters/sqlite/delayed_worker.h"

#include <utility>

namespace tembrix::sqlite {

DelayedWorker::DelayedWorker(std::chrono::milliseconds delay, std::function<bool()> work)
    : delay_(delay), work_(std::move(work)), thread_([this] { run(); }) {}

DelayedWorker::~DelayedWorker() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void DelayedWorker::wake() {
    {
        const std::lock_guard lock(mutex_);
        if (due_)
            return;
        due_ = true;
    }
    changed_.notify_all();
}

void DelayedWorker::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return due_ || ended_; });
        if (ended_ || changed_.wait_for(lock, delay_, [this] { return ended_; }))
            return;
        due_ = false;
        lock.unlock();
        const bool again = work_();
        lock.lock();
        due_ = due_ || again;
    }
}

}  // namespace tembrix::sqlite
