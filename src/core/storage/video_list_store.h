#pragma once

#include <cstdint>
#include <optional>
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

// Whether a list matches the stored checksums. If none are stored, any list does.
inline bool matchesCheck(const std::optional<std::string>& check, BytesView list) {
    if (!check)
        return true;
    const std::string of = checkOf(list);
    const auto end = check->find(' ');
    return check->substr(0, end) == of ||
           (end != std::string::npos && check->substr(end + 1) == of);
}

// Stores the encoded list of videos after its checksum, which is followed by the checksum of the
// list that it replaces: if the process is killed in between, that list still matches. A damaged
// list is not made to match.
inline void storeVideoList(UserDefaults& defaults, BytesView list) {
    std::string check = checkOf(list);
    if (const auto known = defaults.text(layout::videosCheckKey)) {
        const auto before = defaults.data(layout::videosDataKey);
        check +=
            " " + (before && matchesCheck(known, *before) ? checkOf(*before)
                                                          : known->substr(0, known->find(' ')));
    }
    defaults.setText(layout::videosCheckKey, check);
    defaults.setData(layout::videosDataKey, list);
}

}  // namespace tembrix
