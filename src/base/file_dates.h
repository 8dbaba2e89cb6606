#pragma once

#include <filesystem>
#include <optional>

#include "base/date.h"

namespace tembrix {

// When the content of a file was last read, as recorded by the file system. Absent if the file
// cannot be examined.
std::optional<Date> lastAccessDate(const std::filesystem::path& file);

}  // namespace tembrix
