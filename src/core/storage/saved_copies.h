#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/records/timeline_records.h"

namespace tembrix {

// The backup, as the storage needs it for data of which no copy of its own can be read. Any thread.
class SavedCopies {
  public:
    virtual ~SavedCopies() = default;
    // Called only for a timeline that cannot be read elsewhere; absent if there is no good copy.
    virtual std::optional<TimelineLines> savedTimeline(const std::string& videoId) = 0;
    virtual std::filesystem::path savedCollectionFolder(const std::string& id) const = 0;
};

}  // namespace tembrix
