#include "core/storage/storage_health.h"

#include <mutex>

namespace tembrix {

// The defaults may call this on any thread, and either object may be destroyed first.
struct StorageHealth::Link {
    std::mutex mutex;
    StorageHealth* health;
};

StorageHealth::StorageHealth(UserDefaults& defaults, Scheduler& scheduler)
    : scheduler_(scheduler), status_(defaults.status()), link_(std::make_shared<Link>()) {
    link_->health = this;
    defaults.setStatusChanged([&defaults, &scheduler, link = link_] {
        const std::lock_guard lock(link->mutex);
        if (!link->health)
            return;
        scheduler.onMain([&defaults, link] {
            if (link->health)  // modified on this thread only
                link->health->status_.set(defaults.status());
        });
    });
}

void StorageHealth::noteDocuments(bool written) {
    scheduler_.onMain([link = link_, written] {
        if (link->health)  // modified on this thread only
            link->health->documentsWritten_.setIfChanged(written);
    });
}

StorageHealth::~StorageHealth() {
    const std::lock_guard lock(link_->mutex);
    link_->health = nullptr;
}

}  // namespace tembrix
