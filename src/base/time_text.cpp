#include "base/time_text.h"

#include <cstdint>
#include <fmt/format.h>

namespace tembrix {

std::string formatTimeLong(double seconds) {
    const auto total = static_cast<std::int64_t>(seconds);
    return fmt::format("{:02}:{:02}:{:02}", total / 3600, total % 3600 / 60, total % 60);
}

std::string formatTimeShort(double seconds) {
    const auto total = static_cast<std::int64_t>(seconds);
    return fmt::format("{:02}:{:02}", total / 60, total % 60);
}

}  // namespace tembrix
