#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "base/published.h"
#include "base/signal.h"

#include "ports/scheduler.h"
#include "ports/user_defaults.h"

namespace tembrix {

// Whether what the user marks is safe on the disk, for the windows. Lives on the main thread.
class StorageHealth {
  public:
    StorageHealth(UserDefaults& defaults, Scheduler& scheduler);
    ~StorageHealth();

    const DefaultsStatus& status() const { return status_.get(); }
    Subscription observe(std::function<void(const DefaultsStatus&)> observer) {
        return status_.observe(std::move(observer));
    }

  private:
    struct Link;

    Published<DefaultsStatus> status_;
    std::shared_ptr<Link> link_;
};

}  // namespace tembrix
