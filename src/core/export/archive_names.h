#pragma once

#include <filesystem>

namespace tembrix {

// Sets the flag that says that a name is UTF-8 for the names in a zip archive that lack it. Without
// the flag, some systems show names that are not English as gibberish. An archive of an unexpected
// form is not changed.
void markArchiveNamesAsUtf8(const std::filesystem::path& archive);

}  // namespace tembrix
