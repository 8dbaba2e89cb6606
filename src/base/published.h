#pragma once

#include <utility>

#include "base/signal.h"

namespace tembrix {

// A value that tells its observers after each change. Changes and observers belong to the main
// thread.
template <class T>
class Published {
  public:
    Published() = default;
    explicit Published(T value) : value_(std::move(value)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& get() const { return value_; }
    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }

    void set(T value) {
        value_ = std::move(value);
        changed_.emit(value_);
    }

    // Changes the value in place, then tells.
    template <class Change>
    void update(Change&& change) {
        std::forward<Change>(change)(value_);
        changed_.emit(value_);
    }

    // Calls back after each later change, not for the present value.
    Subscription observe(std::function<void(const T&)> observer) {
        return changed_.observe(std::move(observer));
    }

  private:
    T value_{};
    Signal<T> changed_;
};

}  // namespace tembrix
