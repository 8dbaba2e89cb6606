#pragma once

#include <memory>
#include <utility>

namespace tembrix {

// A value that copies share until one of them is written. Timelines consist of these: a snapshot of
// ten thousand stamps needs one pointer each, and changing a stamp copies only the stamp and its
// line. Reading a shared value from several threads is safe. Only the owner of a copy may write to
// it.
template <class T>
class Cow {
  public:
    Cow() : value_(std::make_shared<T>()) {}
    Cow(T value) : value_(std::make_shared<T>(std::move(value))) {}

    const T& operator*() const { return *value_; }
    const T* operator->() const { return value_.get(); }

    // Returns the value for writing. It is copied first if it is shared.
    T& write() {
        if (value_.use_count() != 1)
            value_ = std::make_shared<T>(std::as_const(*value_));
        return *value_;
    }

    // Whether both refer to the same stored value. Caches may rely on it.
    bool sharesWith(const Cow& other) const { return value_ == other.value_; }

    friend bool operator==(const Cow& a, const Cow& b) {
        return a.value_ == b.value_ || *a.value_ == *b.value_;
    }

  private:
    std::shared_ptr<T> value_;
};

}  // namespace tembrix
