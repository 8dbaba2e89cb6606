#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/bytes.h"

namespace tembrix {

// Reads one value of the user defaults without opening them, because a process may need it before
// it knows whether it may work on them. Absent if the file is missing or cannot be read now.
std::optional<Bytes> readStoredValue(const std::filesystem::path& file, std::string_view key);

}  // namespace tembrix
