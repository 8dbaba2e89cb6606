// Opens the database of the user defaults, replaces it if it is damaged, and works in memory while
// it cannot be written.

#include <algorithm>
#include <memory>
#include <utility>

#include "base/files.h"
#include "base/uuid.h"

#include "adapters/sqlite/checkpointer.h"
#include "adapters/sqlite/database.h"
#include "adapters/sqlite/defaults_state.h"
#include "adapters/sqlite/salvage.h"
#include "adapters/sqlite/value_store.h"

namespace tembrix::sqlite {

namespace {

constexpr int pageSize = 4096;  // small, so that few bytes are written for a changed piece

// With NORMAL, SQLite syncs only at checkpoints, which the checkpointer makes; the log is synced in
// the background. Some builds of SQLite overwrite freed pages with zeros by default, which doubles
// the cost and is not needed.
constexpr const char* setUp =
    "PRAGMA secure_delete=OFF;"
    "PRAGMA journal_mode=WAL;"
    "PRAGMA synchronous=NORMAL;"
    "PRAGMA wal_autocheckpoint=0;"
    "PRAGMA cache_size=-16384;";

// Earlier versions created databases with large pages. While another program uses the file, they
// are kept.
void makePagesSmall(Database& database) {
    {
        Statement size(database, "PRAGMA page_size");
        if (size.step() != SQLITE_ROW || size.integer(0) == pageSize)
            return;
    }
    bool inLog = true;
    {
        Statement mode(database, "PRAGMA journal_mode=DELETE");
        inLog = mode.step() != SQLITE_ROW || mode.text(0) != "delete";
    }
    if (!inLog)
        database.run("PRAGMA page_size=4096; VACUUM");
}

// SQLITE_ERROR means an intact database with a table of another format.
bool mustBeReplaced(int code) {
    return isDamage(code) || code == SQLITE_ERROR;
}

}  // namespace

int DefaultsState::openFile(std::string& reason) const {
    auto database = Database::open(file_, Access::readWrite);
    if (!database) {
        reason = database.error().text;
        return database.error().code;
    }
    makePagesSmall(*database);
    int code = database->run(setUp);
    if (code == SQLITE_OK)
        code = ValueStore::prepare(*database);
    // A write transaction shows whether the file can be written. Reading all rows, without large
    // contents, finds most damage before the file is used.
    if (code == SQLITE_OK)
        code = database->run("BEGIN IMMEDIATE; COMMIT");
    if (code == SQLITE_BUSY)
        code = SQLITE_OK;  // another program is writing to it, so it can be written
    if (code != SQLITE_OK) {
        reason = database->lastError();
        if (isDamage(code) || code == SQLITE_ERROR)
            database->leaveLog();
        return code;
    }
    auto store = std::make_unique<ValueStore>(std::move(database).value());
    code = store->check();
    if (code == SQLITE_OK)
        code = adoptIdentity(*store);
    if (failed(code)) {
        reason = store->database().lastError();
        if (isDamage(code) || code == SQLITE_ERROR)
            store->database().leaveLog();
        return code;
    }
    store_ = std::move(store);
    checkpointer_ = std::make_unique<Checkpointer>(file_);
    sqlite3_wal_hook(
        store_->database().handle(),
        [](void* self, sqlite3*, const char*, int pages) {
            static_cast<DefaultsState*>(self)->logPages_ = pages;
            return SQLITE_OK;
        },
        const_cast<DefaultsState*>(this));
    return SQLITE_OK;
}

// A store without an identity is new or was written before change numbers were introduced.
int DefaultsState::adoptIdentity(ValueStore& store) const {
    std::string stored;
    if (const int code = store.identity(stored); failed(code))
        return code;
    std::uint64_t last = 0;
    if (stored.empty()) {
        if (identity_.empty())
            identity_ = freshId();
        // A full disk may refuse this; the next start tries it again.
        (void)store.database().run("INSERT OR IGNORE INTO change SELECT key, 1 FROM value");
        (void)store.setIdentity(identity_);
    } else {
        identity_ = stored;
    }
    identityIsOurs_ = false;
    const int code = store.lastNumber(last);
    lastNumber_ = std::max(lastNumber_, last);
    return code;
}

void DefaultsState::open(int damage) const {
    std::string reason;
    if (const int code = openOrReplace(reason, damage); code != SQLITE_OK)
        openInMemory(code, reason);
}

int DefaultsState::openOrReplace(std::string& reason, int damage) const {
    bool replaced = useSalvaged();
    int code = damage;
    if (damage == SQLITE_OK)
        code = openFile(reason);
    else
        reason = sqlite3_errstr(damage);
    if (mustBeReplaced(code) && !replaced) {
        code = salvageFile(reason);
        replaced = code == SQLITE_OK && useSalvaged();
        if (replaced)
            code = openFile(reason);
        else if (code == SQLITE_OK)
            code = SQLITE_CANTOPEN;
    }
    // The last change numbers may have been lost with the end of the log.
    if (replaced && code == SQLITE_OK)
        lastNumber_ += unreadNumbers;
    return code;
}

// On a full disk this fails until there is room. It may take long, so most of the time is left to
// other work.
int DefaultsState::salvageFile(const std::string& reason) const {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    if (begin < salvageAgain_)
        return salvageCode_;
    int count = 0;
    salvageCode_ = salvageBeside(file_, count);
    salvageAgain_ = {};
    if (salvageCode_ == SQLITE_OK) {
        log_.line("⚠️ UserDefaults: " + std::to_string(count) +
                  " values taken over from the damaged database - " + reason);
    } else {
        const auto end = Clock::now();
        salvageAgain_ = end + 20 * (end - begin);
        log_.line("❌ UserDefaults: Damaged database cannot be replaced - " + reason + ", " +
                  sqlite3_errstr(salvageCode_));
    }
    return salvageCode_;
}

bool DefaultsState::useSalvaged() const {
    std::filesystem::path aside;
    if (!putSalvagedInPlace(file_, aside))
        return false;
    log_.line("⚠️ UserDefaults: Damaged database set aside" +
              (aside.empty() ? std::string() : " as " + pathText(aside.filename())));
    incidents_.databaseReplaced = true;
    identity_.clear();
    return true;
}

void DefaultsState::openInMemory(int code, const std::string& reason) const {
    log_.line("❌ UserDefaults: Database cannot be written, working in memory - " + reason);
    refused(code);
    auto memory = Database::inMemory();
    ValueStore::prepare(memory);
    store_ = std::make_unique<ValueStore>(std::move(memory));
    int count = 0;
    if (auto present = openForReading(file_))
        salvage(std::move(*present), *store_, count);
    std::uint64_t last = 0;
    store_->lastNumber(last);
    std::string stored;
    store_->identity(stored);
    if (!stored.empty())
        identity_ = stored;
    identityIsOurs_ = identity_.empty();
    if (identityIsOurs_)
        identity_ = freshId();
    lastNumber_ = std::max(lastNumber_, last) + unreadNumbers;
}

}  // namespace tembrix::sqlite
