#pragma once

#include <cstdint>
#include <string>

#include "base/bytes.h"

#include "ports/user_defaults.h"

#include "core/storage/data_layout.h"

namespace tembrix {

// A number by which a damaged value is told from the one that was stored (FNV-1a).
inline std::string checkOf(BytesView value) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const auto byte : value) {
        hash ^= static_cast<std::uint8_t>(byte);
        hash *= 1099511628211ULL;
    }
    return std::to_string(hash);
}

// Stores the encoded list of videos with its check. The check goes first: a process killed between
// the two leaves the older list, which differs from the check but is no worse than its second copy.
inline void storeVideoList(UserDefaults& defaults, BytesView list) {
    defaults.setText(layout::videosCheckKey, checkOf(list));
    defaults.setData(layout::videosDataKey, list);
}

}  // namespace tembrix
