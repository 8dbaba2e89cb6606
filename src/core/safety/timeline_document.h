#pragma once

#include <filesystem>

#include "base/bytes.h"
#include "base/files.h"
#include "base/result.h"

#include "core/records/codec.h"
#include "core/records/orphaned_timeline.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// Reads the timelines in a file of the backup, which may be a record or a plain document.
inline Result<TimelineLines> readTimelineDocument(const std::filesystem::path& file) {
    const auto content = readFile(file);
    if (!content)
        return content.error();
    if (auto record = decode<OrphanedTimeline>(*content))
        return std::move(record->timelines);
    return decode<TimelineLines>(*content);
}

}  // namespace tembrix
