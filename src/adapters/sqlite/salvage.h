#pragma once

#include <filesystem>
#include <optional>

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

// Copies the readable values of a damaged database with their change numbers and the identity, and
// counts them. Returns SQLITE_OK or the error of the target.
int salvage(Database source, ValueStore& target, int& count);

// Copies the readable values of a damaged database to a new one beside it, which is complete and on
// the disk if the result is SQLITE_OK. The damaged one is not changed.
int salvageBeside(const std::filesystem::path& file, int& count);

// Renames the damaged database to `aside` and puts the salvaged one in its place. Returns false if
// there is none or it cannot be renamed. Also completes what a killed process has begun, so it must
// be called before the database is opened.
bool putSalvagedInPlace(const std::filesystem::path& file, std::filesystem::path& aside);

// Renames a file and its log to a free name with the ending ".damaged-" and a number. Returns an
// empty path if that fails.
std::filesystem::path moveAside(const std::filesystem::path& file);

// Opens a database that cannot be opened for writing, for reading only: alone, as a copy or, if it
// has no log, as it is. Absent if it cannot be read together with its log, because without the log
// its values are old.
std::optional<Database> openForReading(const std::filesystem::path& file);

}  // namespace tembrix::sqlite
