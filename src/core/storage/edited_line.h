#pragma once

#include <cstddef>
#include <vector>

#include "base/cow.h"

#include "core/records/timeline_records.h"

namespace tembrix {

// Two versions of a line that differ in nothing but stamps. This many stamps at the front and at
// the back are the same objects in both, so that nobody has to compare them.
struct EditedLine {
    Cow<TimelineLine> before;
    Cow<TimelineLine> after;
    std::size_t front = 0;
    std::size_t back = 0;
};
using EditedLines = std::vector<EditedLine>;

}  // namespace tembrix
