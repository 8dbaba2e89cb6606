#pragma once

#include <optional>
#include <string>
#include <utility>

#include "ports/user_defaults.h"

#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/storage/data_layout.h"

namespace tembrix {

// The timeline of a video at the moment of its deletion, while the deletion can be taken back.
inline std::optional<TimelineLines> deletedTimeline(const UserDefaults& defaults,
                                                    const std::string& videoId) {
    for (const auto& key :
         {layout::deletedKey(layout::timelineKey(videoId)), layout::deletedDocumentKey(videoId)})
        if (const auto kept = defaults.data(key))
            if (auto lines = decode<TimelineLines>(*kept))
                return std::move(lines).value();
    return std::nullopt;
}

}  // namespace tembrix
