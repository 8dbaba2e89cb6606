#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/records/timeline_records.h"

namespace tembrix {

// Provides copies from the backup for data of which no other copy can be read, and hears of damage.
// Any thread.
class SavedCopies {
  public:
    virtual ~SavedCopies() = default;
    // Called only if no other copy of the timeline can be read. Absent without a good copy.
    virtual std::optional<TimelineLines> savedTimeline(const std::string& videoId) = 0;
    virtual std::filesystem::path savedCollectionFolder(const std::string& id) const = 0;
    // Called when a value could not be read and another copy than the backup's is used.
    virtual void noteDamage() = 0;
};

}  // namespace tembrix
