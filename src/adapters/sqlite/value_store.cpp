#include "adapters/sqlite/value_store.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace tembrix::sqlite {

namespace {

enum Kind : std::int64_t { kindData, kindText, kindDate, kindBoolean, kindPieces };

constexpr const char* schema =
    "CREATE TABLE IF NOT EXISTS value("
    "key TEXT PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, data) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS change("
    "key TEXT PRIMARY KEY NOT NULL, number INTEGER NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS store(identity TEXT NOT NULL);";

constexpr std::size_t wholeUpTo = 8 * 1024;   // bytes; larger values are stored in pieces
constexpr std::size_t pieceSize = 32 * 1024;  // of values that the caller has not split

ValuePieces cut(BytesView bytes) {
    ValuePieces pieces;
    for (std::size_t at = 0; at < bytes.size(); at += pieceSize) {
        const auto part = bytes.subspan(at, std::min(pieceSize, bytes.size() - at));
        pieces.push_back(std::make_shared<const ValuePiece>(Bytes(part.begin(), part.end())));
    }
    return pieces;
}

// Runs a statement that reads one number. SQLITE_ROW is a success.
int oneInteger(Statement& statement, std::uint64_t& number) {
    const int code = statement.step();
    number = code == SQLITE_ROW ? static_cast<std::uint64_t>(statement.integer(0)) : 0;
    statement.reset();
    return code;
}

}  // namespace

int ValueStore::prepare(Database& database) {
    if (const int code = database.run(schema); code != SQLITE_OK)
        return code;
    return database.run(PieceTable::schema);
}

ValueStore::ValueStore(Database opened)
    : database_(std::move(opened)),
      get_(database_, "SELECT kind, data FROM value WHERE key = ?1"),
      // Not an upsert, because that copies a large value once more.
      put_(database_, "REPLACE INTO value(key, kind, data) VALUES(?1, ?2, ?3)"),
      erase_(database_, "DELETE FROM value WHERE key = ?1"),
      list_(database_, "SELECT key FROM value WHERE key >= ?1 ORDER BY key"),
      number_(database_, "SELECT number FROM change WHERE key = ?1"),
      setNumber_(database_, "REPLACE INTO change(key, number) VALUES(?1, ?2)"),
      lastNumber_(database_, "SELECT max(number) FROM change"),
      pieces_(database_) {}

int ValueStore::read(std::string_view key, std::optional<StoredValue>& value) {
    value.reset();
    get_.bind(1, key);
    int code = get_.step();
    std::optional<PieceHeader> header;
    if (code == SQLITE_ROW) {
        const int type = get_.type(1);
        const std::int64_t kind = get_.type(0) == SQLITE_INTEGER ? get_.integer(0) : -1;
        if (kind == kindData && type == SQLITE_BLOB)
            value = Bytes(get_.bytes(1).begin(), get_.bytes(1).end());
        else if (kind == kindText && type == SQLITE_TEXT)
            value = get_.text(1);
        else if (kind == kindDate && type == SQLITE_FLOAT)
            value = Date{get_.real(1)};
        else if (kind == kindBoolean && type == SQLITE_INTEGER)
            value = get_.integer(1) != 0;
        else if (kind == kindPieces && type == SQLITE_BLOB)
            header = PieceHeader::decode(get_.bytes(1));
        if (header) {
            // The statement's read transaction is still open, so that row and pieces are
            // consistent.
            Bytes bytes;
            const int read = pieces_.read(*header, bytes);
            if (read == SQLITE_DONE)
                value = std::move(bytes);
            else
                code = read;
        } else if (kind == kindPieces) {
            code = SQLITE_CORRUPT;
        }
    }
    get_.reset();
    return code;
}

int ValueStore::list(std::string_view prefix, std::vector<std::string>& keys) {
    keys.clear();
    list_.bind(1, prefix);
    int code = list_.step();
    for (; code == SQLITE_ROW; code = list_.step()) {
        auto key = list_.text(0);
        if (!key.starts_with(prefix))
            break;  // keys ascend, so those with the prefix are adjacent
        keys.push_back(std::move(key));
    }
    list_.reset();
    return code;
}

int ValueStore::header(std::string_view key, std::optional<PieceHeader>& header) {
    get_.bind(1, key);
    const int code = get_.step();
    if (code == SQLITE_ROW && get_.integer(0) == kindPieces)
        header = PieceHeader::decode(get_.bytes(1));
    get_.reset();
    return code;
}

int ValueStore::apply(std::string_view key, const PendingChange& change) {
    int code = database_.run("BEGIN IMMEDIATE");
    if (code != SQLITE_OK)
        return code;
    code = applyInTransaction(key, change);
    if (code == SQLITE_DONE)
        code = database_.run("COMMIT") == SQLITE_OK ? SQLITE_DONE : database_.lastCode();
    if (code != SQLITE_DONE) {
        pieces_.forget();
        database_.run("ROLLBACK");
    }
    return code;
}

int ValueStore::applyInTransaction(std::string_view key, const PendingChange& change) {
    setNumber_.bind(1, key);
    setNumber_.bind(2, static_cast<std::int64_t>(change.number));
    int code = setNumber_.step();
    setNumber_.reset();
    if (code != SQLITE_DONE)
        return code;
    std::optional<PieceHeader> before;
    if (code = header(key, before); code != SQLITE_ROW && code != SQLITE_DONE)
        return code;

    ValuePieces pieces;
    const Bytes* whole = change.value ? std::get_if<Bytes>(&*change.value) : nullptr;
    const auto* shared = change.value ? std::get_if<SharedPieces>(&*change.value) : nullptr;
    const ValuePieces* given = shared ? shared->get() : nullptr;
    Bytes small;
    if (given) {
        std::size_t size = 0;
        for (auto piece = given->begin(); piece != given->end() && size <= wholeUpTo; ++piece)
            size += (*piece)->bytes.size();
        if (size <= wholeUpTo) {
            small = joined(*given);
            whole = &small;
            given = nullptr;
        }
    } else if (whole && whole->size() > wholeUpTo) {
        pieces = cut(*whole);
        given = &pieces;
    }
    if (given) {
        PieceHeader header = before.value_or(PieceHeader{});
        if (code = pieces_.write(header, *given); code != SQLITE_DONE)
            return code;
        return put(key, kindPieces, BytesView(header.encoded()));
    }
    if (before)
        if (code = pieces_.erase(*before); code != SQLITE_DONE)
            return code;
    if (whole)
        return put(key, kindData, BytesView(*whole));
    if (!change.value) {
        erase_.bind(1, key);
        code = erase_.step();
        erase_.reset();
        return code;
    }
    if (const auto* text = std::get_if<std::string>(&*change.value))
        return put(key, kindText, std::string_view(*text));
    if (const auto* date = std::get_if<Date>(&*change.value))
        return put(key, kindDate, date->secondsSince1970);
    return put(key, kindBoolean, std::int64_t{std::get<bool>(*change.value)});
}

template <class Value>
int ValueStore::put(std::string_view key, std::int64_t kind, const Value& value) {
    put_.bind(1, key);
    put_.bind(2, kind);
    put_.bind(3, value);
    const int code = put_.step();
    put_.reset();
    return code;
}

int ValueStore::number(std::string_view key, std::uint64_t& number) {
    number_.bind(1, key);
    return oneInteger(number_, number);
}

int ValueStore::lastNumber(std::uint64_t& number) {
    return oneInteger(lastNumber_, number);
}

int ValueStore::identity(std::string& identity) {
    Statement get(database_, "SELECT identity FROM store");
    const int code = get.step();
    identity = code == SQLITE_ROW ? get.text(0) : std::string();
    return code;
}

int ValueStore::setIdentity(std::string_view identity) {
    if (const int code = database_.run("DELETE FROM store"); code != SQLITE_OK)
        return code;
    Statement put(database_, "INSERT INTO store VALUES(?1)");
    put.bind(1, identity);
    return put.step();
}

int ValueStore::check() {
    return database_.run(
        "SELECT sum(length(data)) FROM value WHERE kind >= 0;"
        "SELECT sum(number) FROM change WHERE number > 0;"
        "SELECT count(*) FROM piece WHERE hash > 0;");
}

}  // namespace tembrix::sqlite
