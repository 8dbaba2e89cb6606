#pragma once

#include <optional>
#include <string>

#include "base/bytes.h"

#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

// Changes that a database refused, stored in a file for the next start.
struct Recovery {
    std::string identity;  // of the store in which the changes have their numbers
    PendingChanges changes;
};

Bytes encodeRecovery(const Recovery& recovery);
// Absent if the file is incomplete or damaged.
std::optional<Recovery> decodeRecovery(BytesView file);

}  // namespace tembrix::sqlite
