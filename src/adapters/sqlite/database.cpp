#include "adapters/sqlite/database.h"

#include <fmt/format.h>
#include <utility>

#include "base/files.h"

namespace tembrix::sqlite {

namespace {

// How long to wait for another connection that writes: the checkpointer, which is short, or another
// program. The wait may delay a key press, so the lock is tried every millisecond.
constexpr int busyTimeoutMilliseconds = 2000;

int waitForWriter(void*, int waits) {
    return waits < busyTimeoutMilliseconds && sqlite3_sleep(1) > 0;
}

// Converts a path to a URI. Escapes the characters that end the path of a URI or start an escape.
std::string uriText(const std::filesystem::path& file) {
    std::string text = "file:";
    for (const char c : pathText(file)) {
        if (c == '%' || c == '?' || c == '#')
            text += fmt::format("%{:02x}", static_cast<unsigned char>(c));
        else
            text += c;
    }
    return text + "?immutable=1";
}

}  // namespace

bool isDamage(int code) {
    const int primary = code & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

Result<Database> Database::open(const std::filesystem::path& file, Access access) {
    const bool fixed = access == Access::asItStands;
    int flags = fixed ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI : SQLITE_OPEN_READWRITE;
    if (access == Access::readWrite)
        flags |= SQLITE_OPEN_CREATE;
    if (access == Access::asOthersWrite)
        flags = SQLITE_OPEN_READONLY;
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(fixed ? uriText(file).c_str() : pathText(file).c_str(),
                                     &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    Database database(handle);
    if (code != SQLITE_OK)
        return Error{"sqlite", code, database.lastError()};
    sqlite3_busy_handler(handle, waitForWriter, nullptr);
    if (access == Access::alone) {
        // Set before the first read, this makes SQLite build the index of the log in memory instead
        // of in a file.
        database.run("PRAGMA locking_mode=EXCLUSIVE");
        database.leaveLog();
    }
    return database;
}

Database Database::inMemory() {
    sqlite3* handle = nullptr;
    sqlite3_open_v2(":memory:", &handle,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    return Database(handle);
}

int Database::run(const char* sql) {
    return sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr);
}

Statement::Statement(const Database& database, std::string_view sql) {
    sqlite3_stmt* handle = nullptr;
    prepared_ = sqlite3_prepare_v3(database.handle(), sql.data(), static_cast<int>(sql.size()),
                                   SQLITE_PREPARE_PERSISTENT, &handle, nullptr);
    handle_.reset(handle);
}

void Statement::reset() {
    if (!handle_)
        return;
    sqlite3_reset(handle_.get());
    sqlite3_clear_bindings(handle_.get());
}

void Statement::bind(int parameter, std::string_view text) {
    // A null pointer would bind NULL instead of an empty text.
    sqlite3_bind_text64(handle_.get(), parameter, text.data() ? text.data() : "", text.size(),
                        SQLITE_STATIC, SQLITE_UTF8);
}

void Statement::bind(int parameter, BytesView bytes) {
    // A null pointer would bind NULL instead of an empty blob.
    sqlite3_bind_blob64(handle_.get(), parameter,
                        bytes.empty() ? static_cast<const void*>("") : bytes.data(), bytes.size(),
                        SQLITE_STATIC);
}

void Statement::bind(int parameter, double number) {
    sqlite3_bind_double(handle_.get(), parameter, number);
}

void Statement::bind(int parameter, std::int64_t number) {
    sqlite3_bind_int64(handle_.get(), parameter, number);
}

int Statement::step() {
    return prepared_ == SQLITE_OK ? sqlite3_step(handle_.get()) : prepared_;
}

std::string Statement::text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle_.get(), column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    return text ? std::string(text, size) : std::string();
}

BytesView Statement::bytes(int column) const {
    const auto* data = static_cast<const std::uint8_t*>(sqlite3_column_blob(handle_.get(), column));
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column))};
}

}  // namespace tembrix::sqlite
