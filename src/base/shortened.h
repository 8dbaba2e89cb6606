#pragma once

#include <string>
#include <string_view>

namespace tembrix {

// A text cut to what a window or a picture can show, with an ellipsis. A name from a foreign file
// can be as long as the file, and measuring and shaping it would take seconds at each paint.
std::string shortened(std::string_view text);

}  // namespace tembrix
