#pragma once

#include <string_view>

namespace tembrix {

// How stamps find their line: on the selected one, or on the one line of their tag.
enum class MarkupMode { standard, tagBased };

std::string_view markupModeText(MarkupMode mode);
MarkupMode markupModeFromText(std::string_view text);  // an unknown text reads as standard

}  // namespace tembrix
