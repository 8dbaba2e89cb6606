#include "adapters/sqlite/sqlite_user_defaults.h"

#include <system_error>
#include <utility>

#include "base/files.h"

#include "adapters/sqlite/checkpointer.h"
#include "adapters/sqlite/database.h"

namespace tembrix {

namespace {

using sqlite::Access;
using sqlite::Checkpointer;
using sqlite::Database;
using sqlite::Statement;

enum Kind : std::int64_t { kindData, kindText, kindDate, kindBoolean };

// Large pages, because the large values are what is written most: a timeline of 3 MB is 48 of them
// instead of 750. NORMAL syncs only at checkpoints, which the checkpointer makes. Freed pages need
// no overwriting with zeros, which some builds of the library do by default at double the cost.
constexpr const char* setUp =
    "PRAGMA page_size=65536;"
    "PRAGMA secure_delete=OFF;"
    "PRAGMA journal_mode=WAL;"
    "PRAGMA synchronous=NORMAL;"
    "PRAGMA wal_autocheckpoint=0;"
    "PRAGMA cache_size=-16384;";
constexpr const char* createTable =
    "CREATE TABLE IF NOT EXISTS value("
    "key TEXT PRIMARY KEY NOT NULL, kind INTEGER NOT NULL, data) WITHOUT ROWID;";
constexpr int checkpointPages = 256;  // 16 MB of log wake the checkpointer
// 128 MB: it cannot keep up, and writers wait for it once. No hand presses keys that fast.
constexpr int fullLogPages = 2048;

// Not an upsert, which copies a large value once more on its way.
constexpr std::string_view putSql = "REPLACE INTO value(key, kind, data) VALUES(?1, ?2, ?3)";

// The keys of a database as far as they can be read, from both ends: damage in the middle costs
// only what lies there.
std::vector<std::string> readableKeys(const Database& source) {
    std::vector<std::string> keys;
    for (const auto* sql :
         {"SELECT key FROM value ORDER BY key", "SELECT key FROM value ORDER BY key DESC"}) {
        Statement all(source, sql);
        int code = all.step();
        for (; code == SQLITE_ROW; code = all.step())
            keys.push_back(all.text(0));
        if (code == SQLITE_DONE)
            break;
    }
    return keys;
}

// Copies the rows that can be read; returns how many.
int salvage(const Database& source, Database& target) {
    int count = 0;
    target.run("BEGIN");
    Statement put(target, putSql);
    for (const auto& key : readableKeys(source)) {
        Statement get(source, "SELECT kind, data FROM value WHERE key = ?1");
        get.bind(1, key);
        if (get.step() != SQLITE_ROW)
            continue;
        put.reset();
        put.bind(1, key);
        put.bind(2, get.integer(0));
        sqlite3_bind_value(put.handle(), 3, sqlite3_column_value(get.handle(), 1));
        if (put.step() == SQLITE_DONE)
            ++count;
    }
    put.reset();
    target.run("COMMIT");
    return count;
}

// Moves a database with its log to a name that is free; empty if that fails.
std::filesystem::path moveAside(const std::filesystem::path& file) {
    std::error_code error;
    std::filesystem::path target;
    for (int number = 1;; ++number) {
        target = file;
        target += ".damaged-" + std::to_string(number);
        if (!std::filesystem::exists(std::filesystem::symlink_status(target, error)))
            break;
    }
    std::filesystem::rename(file, target, error);
    if (error)
        return {};
    auto log = file;
    auto asideLog = target;
    std::filesystem::rename(log += "-wal", asideLog += "-wal", error);
    auto index = file;
    std::filesystem::remove(index += "-shm", error);  // made anew from the log
    return target;
}

}  // namespace

struct SqliteUserDefaults::Store {
    explicit Store(Database opened)
        : database(std::move(opened)),
          get(database, "SELECT data FROM value WHERE key = ?1 AND kind = ?2"),
          put(database, putSql),
          erase(database, "DELETE FROM value WHERE key = ?1"),
          list(database, "SELECT key FROM value WHERE key >= ?1 ORDER BY key") {}

    // Calls `take` if the key has a value of this kind; the value stands in column 0 of `get`.
    template <class Take>
    int read(std::string_view key, Kind kind, int type, const Take& take) {
        get.bind(1, key);
        get.bind(2, std::int64_t{kind});
        const int code = get.step();
        if (code == SQLITE_ROW && get.type(0) == type)
            take();
        get.reset();
        return code;
    }

    template <class Value>
    int write(std::string_view key, Kind kind, const Value& value) {
        put.bind(1, key);
        put.bind(2, std::int64_t{kind});
        put.bind(3, value);
        const int code = put.step();
        put.reset();
        return code;
    }

    void checkpointOffTheCallersThread(const std::filesystem::path& file) {
        checkpointer = std::make_unique<Checkpointer>(file);
        sqlite3_wal_hook(
            database.handle(),
            [](void* self, sqlite3*, const char*, int pages) {
                static_cast<Store*>(self)->logPages = pages;
                return SQLITE_OK;
            },
            this);
    }

    // After a write, with its statement at rest.
    void tendLog() {
        const int pages = std::exchange(logPages, 0);
        if (pages >= fullLogPages)
            checkpointer->wakeAndWait();
        else if (pages >= checkpointPages)
            checkpointer->wake();
    }

    Database database;
    Statement get;
    Statement put;
    Statement erase;
    Statement list;
    int logPages = 0;  // in the log after the last write; 0 if there was none
    std::unique_ptr<Checkpointer> checkpointer;
};

SqliteUserDefaults::SqliteUserDefaults(std::filesystem::path file, Log& log)
    : file_(std::move(file)), log_(log) {
    (void)makeFolder(file_.parent_path());
    open(true);
}

SqliteUserDefaults::~SqliteUserDefaults() = default;

bool SqliteUserDefaults::isDurable() const {
    const std::lock_guard lock(mutex_);
    return store_->checkpointer != nullptr;
}

void SqliteUserDefaults::open(bool mayReplace) const {
    auto database = Database::open(file_, Access::readWrite);
    if (!database)
        return openInMemory(database.error().text);
    int code = database->run(setUp);
    if (code == SQLITE_OK)
        code = database->run(createTable);
    // A write transaction tells a file that may only be read; the walk over all rows, which leaves
    // the long values alone, tells most damage before anyone relies on the file.
    if (code == SQLITE_OK)
        code = database->run("BEGIN IMMEDIATE; COMMIT");
    if (code == SQLITE_BUSY)
        code = SQLITE_OK;  // another program writes to it, so it can be written
    if (code == SQLITE_OK)
        code = database->run("SELECT sum(length(data)) FROM value WHERE kind >= 0");
    if (code == SQLITE_OK) {
        store_ = std::make_unique<Store>(std::move(database).value());
        store_->checkpointOffTheCallersThread(file_);
        return;
    }
    const std::string reason = database->lastError();
    // SQLITE_ERROR: a sound database, but with a table of another shape.
    if (mayReplace && (sqlite::isDamage(code) || code == SQLITE_ERROR)) {
        sqlite3_db_config(database->handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        { const Database closed = std::move(database).value(); }
        replaceDamaged(reason);
    } else {
        openInMemory(reason);
    }
}

void SqliteUserDefaults::openInMemory(const std::string& reason) const {
    log_.line("❌ UserDefaults: Database cannot be written, working in memory - " + reason);
    auto memory = Database::inMemory();
    memory.run(createTable);
    if (const auto present = Database::open(file_, Access::asItStands))
        salvage(*present, memory);
    store_ = std::make_unique<Store>(std::move(memory));
}

void SqliteUserDefaults::replaceDamaged(const std::string& reason) const {
    const auto aside = moveAside(file_);
    if (aside.empty())
        return openInMemory(reason);
    log_.line("⚠️ UserDefaults: Damaged database set aside as " + pathText(aside.filename()) +
              " - " + reason);
    open(false);
    auto damaged = Database::open(aside, Access::readWrite);
    if (!damaged)
        return;
    // Otherwise a file that is shorter than it says is refused whole.
    damaged->run("PRAGMA writable_schema=ON");
    // The copy set aside stays as it was found, its log included.
    sqlite3_db_config(damaged->handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    const int count = salvage(*damaged, store_->database);
    log_.line("⚠️ UserDefaults: " + std::to_string(count) +
              " values taken over from the damaged database");
}

void SqliteUserDefaults::perform(const std::function<int(Store&)>& operation) const {
    const std::lock_guard lock(mutex_);
    int code = operation(*store_);
    if (sqlite::isDamage(code) && store_->checkpointer) {
        const std::string reason = store_->database.lastError();
        sqlite3_db_config(store_->database.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        store_.reset();
        replaceDamaged(reason);
        code = operation(*store_);
    }
    store_->tendLog();
    if (code != SQLITE_DONE && code != SQLITE_ROW)
        log_.line("❌ UserDefaults: " + store_->database.lastError());
}

std::optional<Bytes> SqliteUserDefaults::data(std::string_view key) const {
    std::optional<Bytes> value;
    perform([&](Store& store) {
        return store.read(key, kindData, SQLITE_BLOB, [&] {
            const auto bytes = store.get.bytes(0);
            value.emplace(bytes.begin(), bytes.end());
        });
    });
    return value;
}

std::optional<std::string> SqliteUserDefaults::text(std::string_view key) const {
    std::optional<std::string> value;
    perform([&](Store& store) {
        return store.read(key, kindText, SQLITE_TEXT, [&] { value = store.get.text(0); });
    });
    return value;
}

std::optional<Date> SqliteUserDefaults::date(std::string_view key) const {
    std::optional<Date> value;
    perform([&](Store& store) {
        return store.read(key, kindDate, SQLITE_FLOAT, [&] { value = Date{store.get.real(0)}; });
    });
    return value;
}

bool SqliteUserDefaults::boolean(std::string_view key) const {
    bool value = false;
    perform([&](Store& store) {
        return store.read(key, kindBoolean, SQLITE_INTEGER,
                          [&] { value = store.get.integer(0) != 0; });
    });
    return value;
}

void SqliteUserDefaults::setData(std::string_view key, BytesView value) {
    perform([&](Store& store) { return store.write(key, kindData, value); });
}

void SqliteUserDefaults::setText(std::string_view key, std::string_view value) {
    perform([&](Store& store) { return store.write(key, kindText, value); });
}

void SqliteUserDefaults::setDate(std::string_view key, Date value) {
    perform([&](Store& store) { return store.write(key, kindDate, value.secondsSince1970); });
}

void SqliteUserDefaults::setBoolean(std::string_view key, bool value) {
    perform([&](Store& store) { return store.write(key, kindBoolean, std::int64_t{value}); });
}

void SqliteUserDefaults::remove(std::string_view key) {
    perform([&](Store& store) {
        store.erase.bind(1, key);
        const int code = store.erase.step();
        store.erase.reset();
        return code;
    });
}

std::vector<std::string> SqliteUserDefaults::keys(std::string_view prefix) const {
    std::vector<std::string> keys;
    perform([&](Store& store) {
        keys.clear();
        store.list.bind(1, prefix);
        int code = store.list.step();
        for (; code == SQLITE_ROW; code = store.list.step()) {
            auto key = store.list.text(0);
            if (!key.starts_with(prefix))
                break;  // keys ascend, so those with the prefix stand together
            keys.push_back(std::move(key));
        }
        store.list.reset();
        return code;
    });
    return keys;
}

}  // namespace tembrix
