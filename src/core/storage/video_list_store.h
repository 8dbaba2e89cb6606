#pragma once

#include <cstdint>
#include <string>

#include "base/bytes.h"

#include "ports/user_defaults.h"

#include "core/storage/data_layout.h"

namespace tembrix {

// A checksum that detects a damaged value (FNV-1a).
inline std::string checkOf(BytesView value) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const auto byte : value) {
        hash ^= static_cast<std::uint8_t>(byte);
        hash *= 1099511628211ULL;
    }
    return std::to_string(hash);
}

// Stores the encoded list of videos and its checksum. The checksum is written first: if the process
// is killed in between, the older list does not match it, but is as good as its second copy.
inline void storeVideoList(UserDefaults& defaults, BytesView list) {
    defaults.setText(layout::videosCheckKey, checkOf(list));
    defaults.setData(layout::videosDataKey, list);
}

}  // namespace tembrix
