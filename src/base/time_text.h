#pragma once

#include <string>

namespace tembrix {

// "HH:MM:SS" of whole seconds, truncated. Finite values only.
std::string formatTimeLong(double seconds);

// "MM:SS", minutes not wrapped at 60. Finite values only.
std::string formatTimeShort(double seconds);

}  // namespace tembrix
