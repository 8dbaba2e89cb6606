#pragma once

#include <string_view>

namespace tembrix {

// Which line gets a new stamp: the selected line, or the line of its tag.
enum class MarkupMode { standard, tagBased };

std::string_view markupModeText(MarkupMode mode);
MarkupMode markupModeFromText(std::string_view text);  // unknown texts are read as standard

}  // namespace tembrix
