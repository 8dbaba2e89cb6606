#include "core/records/markup_mode.h"

namespace tembrix {

std::string_view markupModeText(MarkupMode mode) {
    return mode == MarkupMode::tagBased ? "tagBased" : "standard";
}

MarkupMode markupModeFromText(std::string_view text) {
    return text == "tagBased" ? MarkupMode::tagBased : MarkupMode::standard;
}

}  // namespace tembrix
