#pragma once

#include <string>

namespace tembrix {

// "HH:MM:SS", truncated to whole seconds. Finite values only.
std::string formatTimeLong(double seconds);

// "MM:SS"; the minutes may exceed 59. Finite values only.
std::string formatTimeShort(double seconds);

}  // namespace tembrix
