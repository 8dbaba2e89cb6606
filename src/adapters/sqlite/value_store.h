#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/bytes.h"
#include "base/date.h"

#include "ports/user_defaults.h"

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/piece_table.h"

namespace tembrix::sqlite {

// Shared, so that the long list is copied only if it is kept.
using SharedPieces = std::shared_ptr<const ValuePieces>;
using StoredValue = std::variant<Bytes, std::string, Date, bool, SharedPieces>;

// Whether the code of a statement means an error.
inline bool failed(int code) {
    return code != SQLITE_DONE && code != SQLITE_ROW && code != SQLITE_OK;
}

// A value to be stored, or the removal of one.
struct PendingChange {
    std::optional<StoredValue> value;  // absent: the key is removed
    std::uint64_t number = 0;
    std::uint64_t base = 0;  // number of the stored value that it replaces, as far as it was known
};
using PendingChanges = std::map<std::string, PendingChange, std::less<>>;

// The values in a database: one row per key, their change numbers, and the pieces of large values.
// Functions return SQLITE_DONE, SQLITE_ROW or an error code.
class ValueStore {
  public:
    // Creates missing tables.
    static int prepare(Database& database);

    explicit ValueStore(Database opened);

    // Returns SQLITE_ROW and the value, or SQLITE_DONE if there is none.
    int read(std::string_view key, std::optional<StoredValue>& value);
    int list(std::string_view prefix, std::vector<std::string>& keys);
    // Stores the change and its number in one transaction.
    int apply(std::string_view key, const PendingChange& change);
    int number(std::string_view key, std::uint64_t& number);
    int lastNumber(std::uint64_t& number);
    int identity(std::string& identity);
    int setIdentity(std::string_view identity);
    // Reads every row once, without the large contents.
    int check();

    Database& database() { return database_; }

  private:
    int applyInTransaction(std::string_view key, const PendingChange& change);
    int header(std::string_view key, std::optional<PieceHeader>& header);
    template <class Value>
    int put(std::string_view key, std::int64_t kind, const Value& value);

    Database database_;
    Statement get_, put_, erase_, list_, number_, setNumber_, lastNumber_;
    PieceTable pieces_;
};

}  // namespace tembrix::sqlite
