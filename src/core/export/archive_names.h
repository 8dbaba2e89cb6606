#pragma once

#include <filesystem>

namespace tembrix {

// Marks the names in a zip archive as UTF-8, which they are, where the packer left that out.
// Without the mark some systems read names that are not English as gibberish. Best effort: an
// archive of an unexpected shape is left as it is.
void markArchiveNamesAsUtf8(const std::filesystem::path& archive);

}  // namespace tembrix
