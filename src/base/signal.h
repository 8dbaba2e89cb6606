#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace tembrix {

// Keeps an observer connected and disconnects it when it is destroyed or reset. Move-only.
class [[nodiscard]] Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { reset(); }

    void reset() {
        if (auto end = std::exchange(end_, nullptr))
            end();
    }
    explicit operator bool() const { return static_cast<bool>(end_); }

  private:
    std::function<void()> end_;
};

// Notifies any number of observers, in the order of their connection. Observers may connect,
// disconnect and emit while they are called. Must be used by one thread.
template <class... Args>
class Signal {
  public:
    using Slot = std::function<void(const Args&...)>;

    Subscription observe(Slot slot) const {
        const auto id = state_->next++;
        state_->slots.emplace(id, std::make_shared<Slot>(std::move(slot)));
        return Subscription([weak = std::weak_ptr(state_), id] {
            if (auto state = weak.lock())
                state->slots.erase(id);
        });
    }

    void emit(const Args&... args) const {
        const auto state = state_;  // an observer may destroy the signal's owner
        const auto end = state->next;
        for (auto it = state->slots.begin(); it != state->slots.end() && it->first < end;) {
            const auto id = it->first;
            const auto slot = it->second;
            (*slot)(args...);
            it = state->slots.upper_bound(id);
        }
    }

  private:
    struct State {
        std::uint64_t next = 0;
        std::map<std::uint64_t, std::shared_ptr<Slot>> slots;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace tembrix
