#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace tembrix {

// Passes values from one thread to another. The producer waits while the queue is full.
template <class T>
class BoundedQueue {
  public:
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    // Returns false if the queue was closed meanwhile; the value is then discarded.
    bool push(T value) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return closed_ || values_.size() < capacity_; });
        if (closed_)
            return false;
        values_.push_back(std::move(value));
        changed_.notify_all();
        return true;
    }
    // Waits for a value. Returns nullopt when the queue is closed and empty.
    std::optional<T> pop() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return closed_ || !values_.empty(); });
        if (values_.empty())
            return std::nullopt;
        std::optional<T> value(std::move(values_.front()));
        values_.pop_front();
        changed_.notify_all();
        return value;
    }
    // No more values are accepted. Those in the queue can still be read.
    void close() {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

  private:
    const std::size_t capacity_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<T> values_;
    bool closed_ = false;
};

}  // namespace tembrix
