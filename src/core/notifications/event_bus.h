#pragma once

#include <functional>
#include <memory>
#include <typeindex>
#include <unordered_map>

#include "base/signal.h"

#include "core/notifications/events.h"

namespace tembrix {

// Typed publish and subscribe within the process. Observers are called immediately, in the order of
// their subscriptions. Main thread only; other threads must switch to it before posting.
class EventBus {
  public:
    template <class Event>
    void post(const Event& event) {
        const auto found = signals_.find(typeid(Event));
        if (found != signals_.end())
            std::static_pointer_cast<Signal<Event>>(found->second)->emit(event);
    }

    template <class Event>
    Subscription observe(std::function<void(const Event&)> observer) {
        auto& signal = signals_[typeid(Event)];
        if (!signal)
            signal = std::make_shared<Signal<Event>>();
        return std::static_pointer_cast<Signal<Event>>(signal)->observe(std::move(observer));
    }

  private:
    std::unordered_map<std::type_index, std::shared_ptr<void>> signals_;
};

}  // namespace tembrix
