#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/result.h"

namespace tembrix::sqlite {

// Whether the code means that the file is damaged or not a database.
bool isDamage(int code);

enum class Access {
    readWrite,  // creates the file if it is missing
    alone,  // an existing file, with its log, for reading; nobody else may use it. Needs no room
            // on the disk and leaves the log as it is.
    asOthersWrite,  // only reads, also while another process writes
    asItStands,     // reads a file that cannot be changed, in a folder that cannot be written
};

// A connection to a database file or to a database in memory.
class Database {
  public:
    static Result<Database> open(const std::filesystem::path& file, Access access);
    static Database inMemory();

    // Runs statements without results. Returns SQLITE_OK or an error code.
    int run(const char* sql);
    // Closing the connection will not copy the log into the database and delete it.
    void leaveLog() {
        sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    std::string lastError() const { return sqlite3_errmsg(handle_.get()); }
    int lastCode() const { return sqlite3_errcode(handle_.get()); }
    sqlite3* handle() const { return handle_.get(); }

  private:
    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    };
    explicit Database(sqlite3* handle) : handle_(handle) {}
    std::unique_ptr<sqlite3, Close> handle_;
};

// A prepared statement. Parameters count from 1, columns from 0. Bound texts and bytes must live
// until the statement has run.
class Statement {
  public:
    Statement() = default;
    Statement(const Database& database, std::string_view sql);

    // Prepares the statement for new parameters. Also ends its read transaction, which would
    // otherwise delay checkpoints.
    void reset();
    void bind(int parameter, std::string_view text);
    void bind(int parameter, BytesView bytes);
    void bind(int parameter, double number);
    void bind(int parameter, std::int64_t number);
    int step();  // SQLITE_ROW, SQLITE_DONE or an error code, including that of preparing

    int type(int column) const { return sqlite3_column_type(handle_.get(), column); }
    std::int64_t integer(int column) const { return sqlite3_column_int64(handle_.get(), column); }
    double real(int column) const { return sqlite3_column_double(handle_.get(), column); }
    std::string text(int column) const;
    BytesView bytes(int column) const;  // valid until the next step
    sqlite3_stmt* handle() const { return handle_.get(); }

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
    int prepared_ = SQLITE_MISUSE;
};

}  // namespace tembrix::sqlite
