#pragma once

#include <filesystem>
#include <optional>

#include "base/date.h"

namespace tembrix {

// When the content of a file was last read, as far as the file system keeps that; absent for a file
// that cannot be looked at.
std::optional<Date> lastAccessDate(const std::filesystem::path& file);

}  // namespace tembrix
