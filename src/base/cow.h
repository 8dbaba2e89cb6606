#pragma once

#include <memory>
#include <utility>

namespace tembrix {

// A value that copies share until one of them is written. Timelines are made of these: a snapshot
// of ten thousand stamps costs a pointer each, and a changed stamp copies only itself and its line.
// Reading a shared value from several threads is safe; writing belongs to the owner of this copy.
template <class T>
class Cow {
  public:
    Cow() : value_(std::make_shared<T>()) {}
    Cow(T value) : value_(std::make_shared<T>(std::move(value))) {}

    const T& operator*() const { return *value_; }
    const T* operator->() const { return value_.get(); }

    // The value for writing; detaches it from other copies first.
    T& write() {
        if (value_.use_count() != 1)
            value_ = std::make_shared<T>(std::as_const(*value_));
        return *value_;
    }

    // True if both are the very same stored value, which a cache may rely on.
    bool sharesWith(const Cow& other) const { return value_ == other.value_; }

    friend bool operator==(const Cow& a, const Cow& b) {
        return a.value_ == b.value_ || *a.value_ == *b.value_;
    }

  private:
    std::shared_ptr<T> value_;
};

}  // namespace tembrix
