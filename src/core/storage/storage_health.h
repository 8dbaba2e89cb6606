#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "base/published.h"
#include "base/signal.h"

#include "ports/scheduler.h"
#include "ports/user_defaults.h"

namespace tembrix {

// Informs the windows whether the user's marks are saved in the database and in the documents. Main
// thread only, unless noted otherwise.
class StorageHealth {
  public:
    StorageHealth(UserDefaults& defaults, Scheduler& scheduler);
    ~StorageHealth();

    const DefaultsStatus& status() const { return status_.get(); }
    Subscription observe(std::function<void(const DefaultsStatus&)> observer) const {
        return status_.observe(std::move(observer));
    }

    bool documentsWritten() const { return documentsWritten_.get(); }
    Subscription observeDocuments(std::function<void(bool)> observer) const {
        return documentsWritten_.observe(
            [observer = std::move(observer)](const bool& written) { observer(written); });
    }
    // Notes whether the last flush wrote all documents. Any thread.
    void noteDocuments(bool written);

  private:
    struct Link;

    Scheduler& scheduler_;
    Published<DefaultsStatus, StorageHealth> status_;
    Published<bool, StorageHealth> documentsWritten_{true};
    std::shared_ptr<Link> link_;
};

}  // namespace tembrix
