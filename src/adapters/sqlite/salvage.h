#pragma once

#include <filesystem>
#include <optional>

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

// Copies the readable values of a damaged database with their change numbers and the identity.
// Returns the number of values.
int salvage(Database source, ValueStore& target);

// Renames a file and its log to a free name with the ending ".damaged-" and a number. Returns an
// empty path if that fails.
std::filesystem::path moveAside(const std::filesystem::path& file);

// Opens a database that cannot be opened in its folder, for reading only: a copy of it with its log
// or, if it cannot be copied, the file itself without its log.
std::optional<Database> openForReading(const std::filesystem::path& file);

}  // namespace tembrix::sqlite
