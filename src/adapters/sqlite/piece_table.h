#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

#include "ports/user_defaults.h"

#include "adapters/sqlite/database.h"

namespace tembrix::sqlite {

// The description of the pieces in the row of a large value. If the pieces do not match it, the
// value is damaged.
struct PieceHeader {
    std::int64_t owner = 0;
    std::uint64_t count = 0;
    std::uint64_t size = 0;  // bytes of all pieces
    std::uint64_t sum = 0;   // sum of the hashes of all pieces, modulo 2^64

    bool operator==(const PieceHeader&) const = default;

    Bytes encoded() const;
    static std::optional<PieceHeader> decode(BytesView bytes);
};

// The pieces of large values, one row each. The rows of a value are ordered by a place number. Gaps
// between the numbers allow insertions without moving other rows.
class PieceTable {
  public:
    static constexpr const char* schema =
        "CREATE TABLE IF NOT EXISTS piece("
        "id INTEGER PRIMARY KEY, hash INTEGER NOT NULL, data BLOB NOT NULL);";

    explicit PieceTable(const Database& database);

    // Appends the bytes of all pieces to `value`. Returns SQLITE_DONE, SQLITE_CORRUPT if the pieces
    // do not match the header, or another error code.
    int read(const PieceHeader& header, Bytes& value);
    // Replaces the pieces of the header, writing only those that differ, and updates the header. An
    // empty header creates a new value. Must be called within a transaction. Returns SQLITE_DONE or
    // an error code; after an error, `forget` must be called.
    int write(PieceHeader& header, const ValuePieces& pieces);
    int erase(const PieceHeader& header);
    void forget() { known_.clear(); }

  private:
    struct Row {
        std::int64_t place = 0;
        std::uint64_t hash = 0;
        std::uint64_t size = 0;
        std::shared_ptr<const ValuePiece> piece;  // null if it was read from the table
        bool holds(const std::shared_ptr<const ValuePiece>& other) const;
    };
    using Rows = std::vector<Row>;
    struct Known {
        PieceHeader header;
        Rows rows;
    };

    static void bindOwner(Statement& statement, std::int64_t owner);
    int load(const PieceHeader& header, Rows& rows);
    int writeAll(PieceHeader& header, const ValuePieces& pieces, Rows& rows);
    int writeChanged(Rows& rows, const ValuePieces& pieces);
    // Replaces a range of rows by new pieces, with places below `high`.
    int replaceGap(const Rows& rows, std::size_t from, std::size_t to, const ValuePieces& pieces,
                   std::size_t first, std::size_t last, std::optional<std::int64_t> high,
                   Rows& result);
    int put(std::int64_t place, const std::shared_ptr<const ValuePiece>& piece, Rows& result);
    int drop(std::int64_t place);

    Statement insert_, delete_, deleteAll_, list_, all_, last_;
    std::int64_t owner_ = 0;  // the owner of the value being written
    std::list<Known> known_;  // the rows of the values written recently, the latest first
};

}  // namespace tembrix::sqlite
