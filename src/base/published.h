#pragma once

#include <functional>
#include <utility>

#include "base/signal.h"

namespace tembrix {

// A value that can be read and observed. Main thread only.
template <class T>
class Observable {
  public:
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    const T& get() const { return value_; }
    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }

    // Observes later changes; not called for the current value.
    Subscription observe(std::function<void(const T&)> observer) const {
        return changed_.observe(std::move(observer));
    }

  protected:
    Observable() = default;
    explicit Observable(T value) : value_(std::move(value)) {}
    ~Observable() = default;

    T value_{};
    Signal<T> changed_;
};

// A public member of its owner, which alone can change the value. Other code uses it as an
// Observable.
template <class T, class Owner>
class Published final : public Observable<T> {
  public:
    Published() = default;
    explicit Published(T value) : Observable<T>(std::move(value)) {}

  private:
    friend Owner;

    void set(T value) {
        this->value_ = std::move(value);
        this->changed_.emit(this->value_);
    }
    // Notifies only if the value is a different one.
    void setIfChanged(T value) {
        if (this->value_ != value)
            set(std::move(value));
    }
    // Changes the value in place and notifies the observers.
    template <class Change>
    void update(Change&& change) {
        std::forward<Change>(change)(this->value_);
        this->changed_.emit(this->value_);
    }
};

}  // namespace tembrix
