#pragma once

#include "base/result.h"

#include "core/records/timeline_records.h"
#include "core/records/video_records.h"

namespace tembrix {

// Keeps the timeline of a video that is about to be removed from the library.
class DeletedTimelineKeeper {
  public:
    virtual ~DeletedTimelineKeeper() = default;
    virtual Result<void> saveTimelineBeforeDeletion(const VideosData& video,
                                                    const TimelineLines& timelines) = 0;
};

}  // namespace tembrix
