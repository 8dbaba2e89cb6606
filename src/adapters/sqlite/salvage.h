#pragma once

#include <filesystem>
#include <optional>

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

// Copies the values of a damaged database that can be read, with their change numbers and the
// identity. Returns how many values.
int salvage(Database source, ValueStore& target);

// Moves a file to a free name with the ending ".damaged-" and a number, a database with its log.
// Empty if that fails.
std::filesystem::path moveAside(const std::filesystem::path& file);

// A database that cannot be opened in its folder, for reading: a copy of it with its log, or the
// file itself without the log if it cannot be copied either.
std::optional<Database> openForReading(const std::filesystem::path& file);

}  // namespace tembrix::sqlite
