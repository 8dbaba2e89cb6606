#pragma once

#include <optional>
#include <string>

#include "base/bytes.h"

#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

// Changes that a database refused, as they wait in a file for the next start.
struct Recovery {
    std::string identity;  // of the store that gave the changes their numbers
    PendingChanges changes;
};

Bytes encodeRecovery(const Recovery& recovery);
// Absent if a byte of the file is missing or wrong.
std::optional<Recovery> decodeRecovery(BytesView file);

}  // namespace tembrix::sqlite
