#pragma once

#include <filesystem>

namespace tembrix {

// Sets the UTF-8 flag of those names in a zip archive that lack it. Without the flag, some systems
// show non-English names as gibberish. An archive with an unexpected structure is not changed.
void markArchiveNamesAsUtf8(const std::filesystem::path& archive);

}  // namespace tembrix
