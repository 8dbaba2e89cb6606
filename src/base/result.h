#pragma once

#include <cassert>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace tembrix {

// Why an operation failed. `text` is for the user or the log; `domain` and `code` identify the
// failure.
struct Error {
    std::string domain;
    int code = 0;
    std::string text;

    bool operator==(const Error&) const = default;
};

// A value or an error. Failures are values: no exception crosses a port.
template <class T>
class [[nodiscard]] Result {
  public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return state_.index() == 0; }
    explicit operator bool() const { return ok(); }

    const T& value() const& { return std::get<0>(state_); }
    T& value() & { return std::get<0>(state_); }
    T&& value() && { return std::get<0>(std::move(state_)); }
    const T& operator*() const& { return value(); }
    T& operator*() & { return value(); }
    const T* operator->() const { return &value(); }
    T* operator->() { return &value(); }

    const Error& error() const { return std::get<1>(state_); }

    std::optional<T> optional() && {
        if (!ok())
            return std::nullopt;
        return std::get<0>(std::move(state_));
    }

  private:
    std::variant<T, Error> state_;
};

// Success without a value, or an error.
template <>
class [[nodiscard]] Result<void> {
  public:
    Result() = default;
    Result(Error error) : error_(std::move(error)) {}

    bool ok() const { return !error_; }
    explicit operator bool() const { return ok(); }
    const Error& error() const { return *error_; }

  private:
    std::optional<Error> error_;
};

}  // namespace tembrix
