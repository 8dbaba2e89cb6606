#pragma once

#include <algorithm>
#include <cstddef>

#include "core/records/timeline_records.h"

namespace tembrix {

// How many stamps at the front and at the back of two versions of a line are the same objects.
struct CommonStamps {
    std::size_t front = 0;
    std::size_t back = 0;
};

inline CommonStamps commonStamps(const Stamps& old, const Stamps& now) {
    const std::size_t both = std::min(old.size(), now.size());
    CommonStamps common;
    while (common.front < both && old[common.front].sharesWith(now[common.front]))
        ++common.front;
    while (common.back < both - common.front &&
           old[old.size() - 1 - common.back].sharesWith(now[now.size() - 1 - common.back]))
        ++common.back;
    return common;
}

}  // namespace tembrix
