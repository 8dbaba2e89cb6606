#pragma once

#include <string>
#include <string_view>

namespace tembrix {

// A text shortened to what a window or a picture can show, with an ellipsis. A name in a foreign
// file can be as long as the file, and layout would take seconds at each paint.
std::string shortened(std::string_view text);

}  // namespace tembrix
