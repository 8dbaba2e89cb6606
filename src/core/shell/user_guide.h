#pragma once

#include <filesystem>
#include <string>

#include "ports/texts.h"

#include "core/commands/commands.h"

namespace tembrix {

// Writes the page of the user's guide with the keys that are in force into the folder and returns
// its file. `guides` contains one page per language. If the page cannot be written, that without
// keys is returned.
std::filesystem::path writeGuide(const std::filesystem::path& guides,
                                 const std::filesystem::path& folder, const Locale& locale,
                                 const Commands& commands, const Texts& texts);

}  // namespace tembrix
