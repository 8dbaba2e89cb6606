#pragma once

#include <optional>
#include <string>

#include "base/date.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// The timelines of one video in the backup, with the data needed to bind them to a video again.
struct OrphanedTimeline {
    std::string videoId;
    std::optional<std::string> videoName;
    TimelineLines timelines;
    std::optional<std::string> customName;
    std::optional<bool> isFavorite;
    Date backupDate;
    bool operator==(const OrphanedTimeline&) const = default;
};

}  // namespace tembrix
