#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "base/published.h"
#include "base/signal.h"

#include "ports/scheduler.h"
#include "ports/user_defaults.h"

namespace tembrix {

// Informs the windows whether the user's marks are saved on the disk. Main thread only.
class StorageHealth {
  public:
    StorageHealth(UserDefaults& defaults, Scheduler& scheduler);
    ~StorageHealth();

    const DefaultsStatus& status() const { return status_.get(); }
    Subscription observe(std::function<void(const DefaultsStatus&)> observer) const {
        return status_.observe(std::move(observer));
    }

  private:
    struct Link;

    Published<DefaultsStatus, StorageHealth> status_;
    std::shared_ptr<Link> link_;
};

}  // namespace tembrix
