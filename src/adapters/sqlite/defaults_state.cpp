#include "adapters/sqlite/defaults_state.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

#include "base/files.h"
#include "base/uuid.h"

#include "adapters/sqlite/database.h"
#include "adapters/sqlite/salvage.h"

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
constexpr int checkpointPages = 4096;  // the log size that starts a checkpoint: 16 MB
// 128 MB: the checkpointer is too slow, so the writer waits for it once. Marking by hand is not
// that fast.
constexpr int fullLogPages = 32768;

// If the log could not be read, it may have contained higher change numbers than the database.
constexpr std::uint64_t unreadNumbers = std::uint64_t{1} << 32;

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

// Syncs what has been written to the log. SQLite holds no locks on this file, so another descriptor
// can be used.
void syncLog(std::filesystem::path database) {
    const int descriptor = ::open((database += "-wal").c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fdatasync(descriptor);
    ::close(descriptor);
}

StorageFault faultOf(int code) {
    switch (code) {
        case SQLITE_FULL:
            return StorageFault::diskFull;
        case SQLITE_READONLY:
        case SQLITE_PERM:
            return StorageFault::readOnly;
        case SQLITE_CANTOPEN:
            return StorageFault::unreachable;
        default:
            return StorageFault::other;
    }
}

bool failed(int code) {
    return code != SQLITE_DONE && code != SQLITE_ROW && code != SQLITE_OK;
}

}  // namespace

DefaultsState::DefaultsState(std::filesystem::path file, Log& log,
                             std::vector<std::filesystem::path> recoveryFolders)
    : file_(std::move(file)), log_(log), folders_(std::move(recoveryFolders)) {
    folders_.insert(folders_.begin(), file_.parent_path());
    (void)makeFolder(file_.parent_path());
    open(true);
    takeInRecoveryFiles();
}

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
            sqlite3_db_config(database->handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        return code;
    }
    auto store = std::make_unique<ValueStore>(std::move(database).value());
    code = store->check();
    if (code == SQLITE_OK)
        code = adoptIdentity(*store);
    if (failed(code)) {
        reason = store->database().lastError();
        if (isDamage(code) || code == SQLITE_ERROR)
            sqlite3_db_config(store->database().handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1,
                              nullptr);
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

void DefaultsState::open(bool mayReplace) const {
    std::string reason;
    const int code = openFile(reason);
    if (code == SQLITE_OK)
        return;
    // SQLITE_ERROR means an intact database with a table of another format.
    if (mayReplace && (isDamage(code) || code == SQLITE_ERROR))
        replaceDamaged(code, reason);
    else
        openInMemory(code, reason);
}

void DefaultsState::openInMemory(int code, const std::string& reason) const {
    log_.line("❌ UserDefaults: Database cannot be written, working in memory - " + reason);
    refused(code);
    auto memory = Database::inMemory();
    ValueStore::prepare(memory);
    checkpointer_.reset();
    store_ = std::make_unique<ValueStore>(std::move(memory));
    if (auto present = openForReading(file_))
        salvage(std::move(*present), *store_);
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

void DefaultsState::replaceDamaged(int code, const std::string& reason) const {
    checkpointer_.reset();
    const auto aside = moveAside(file_);
    if (aside.empty())
        return openInMemory(code, reason);
    log_.line("⚠️ UserDefaults: Damaged database set aside as " + pathText(aside.filename()) +
              " - " + reason);
    identity_.clear();
    open(false);
    auto damaged = Database::open(aside, Access::readWrite);
    if (!damaged)
        return;
    const int count = salvage(std::move(damaged).value(), *store_);
    adoptIdentity(*store_);
    // The last change numbers may have been lost with the end of the log.
    lastNumber_ += unreadNumbers;
    log_.line("⚠️ UserDefaults: " + std::to_string(count) +
              " values taken over from the damaged database");
}

int DefaultsState::attempt(const std::function<int(ValueStore&)>& operation) const {
    int code = operation(*store_);
    if (isDamage(code) && checkpointer_) {
        sqlite3_db_config(store_->database().handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1,
                          nullptr);
        store_.reset();
        replaceDamaged(code, sqlite3_errstr(code));
        code = operation(*store_);
    }
    tendLog();
    if (failed(code) && pending_.empty())  // logged once, not for each attempt
        log_.line(std::string("❌ UserDefaults: ") + sqlite3_errstr(code));
    return code;
}

// Called after a write, when its statement has been reset.
void DefaultsState::tendLog() const {
    const int pages = std::exchange(logPages_, 0);
    if (!checkpointer_)
        return;
    if (pages >= fullLogPages)
        checkpointer_->wakeAndWait();
    else if (pages >= checkpointPages)
        checkpointer_->wake();
}

void DefaultsState::refused(int code) const {
    refusal_ = code & 0xFF;
}

std::optional<StoredValue> DefaultsState::read(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    if (const auto found = pending_.find(key); found != pending_.end())
        return found->second.value;
    std::optional<StoredValue> value;
    if (attempt([&](ValueStore& store) { return store.read(key, value); }) != SQLITE_ROW)
        value.reset();
    return value;
}

std::vector<std::string> DefaultsState::keys(std::string_view prefix) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> keys;
    attempt([&](ValueStore& store) { return store.list(prefix, keys); });
    for (auto it = pending_.lower_bound(prefix);
         it != pending_.end() && it->first.starts_with(prefix); ++it) {
        const auto at = std::lower_bound(keys.begin(), keys.end(), it->first);
        const bool listed = at != keys.end() && *at == it->first;
        if (it->second.value && !listed)
            keys.insert(at, it->first);
        else if (!it->second.value && listed)
            keys.erase(at);
    }
    return keys;
}

bool DefaultsState::change(std::string_view key, PendingChange change) {
    const std::lock_guard lock(mutex_);
    change.number = ++lastNumber_;
    int code = SQLITE_FULL;
    // While changes are pending, upkeep() stores them, so that a key press does not wait for a
    // failing disk.
    const bool open = checkpointer_ && pending_.empty();
    if (open)
        code = attempt([&](ValueStore& store) { return store.apply(key, change); });
    if (code == SQLITE_DONE && checkpointer_)
        return true;
    if (open)
        refused(code);
    if (auto* pieces = change.value ? std::get_if<SharedPieces>(&*change.value) : nullptr)
        *pieces = std::make_shared<const ValuePieces>(**pieces);  // the caller's list is copied
    pending_.insert_or_assign(std::string(key), std::move(change));
    return false;
}

void DefaultsState::storePending() {
    if (!checkpointer_) {
        std::string reason;
        if (const int code = openFile(reason); code != SQLITE_OK)
            return refused(code);
        // The file may have another identity and higher numbers than assumed so far.
        for (auto& [key, change] : pending_)
            change.number = ++lastNumber_;
        log_.line("✅ UserDefaults: Database can be written again");
    }
    while (!pending_.empty()) {
        const auto first = pending_.begin();
        const int code =
            attempt([&](ValueStore& store) { return store.apply(first->first, first->second); });
        if (code != SQLITE_DONE || !checkpointer_)
            return refused(code);
        pending_.erase(first);
    }
}

std::uint64_t DefaultsState::number(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    if (const auto found = pending_.find(key); found != pending_.end())
        return found->second.number;
    std::uint64_t number = 0;
    attempt([&](ValueStore& store) { return store.number(key, number); });
    return number;
}

std::string DefaultsState::identity() const {
    const std::lock_guard lock(mutex_);
    return identity_;
}

void DefaultsState::continueNumbers(std::string_view identity, std::uint64_t last) {
    const std::lock_guard lock(mutex_);
    if (identityIsOurs_ && !identity.empty()) {
        identity_ = identity;
        identityIsOurs_ = false;
        last += unreadNumbers;
    }
    // If the log lost its end, it lost the last change numbers as well.
    if (identity == identity_)
        lastNumber_ = std::max(lastNumber_, last);
}

bool DefaultsState::isDurable() const {
    const std::lock_guard lock(mutex_);
    return checkpointer_ != nullptr;
}

DefaultsStatus DefaultsState::status() const {
    const std::lock_guard lock(mutex_);
    if (checkpointer_ && pending_.empty())
        return {};
    return {false, sqlite3_errstr(refusal_), faultOf(refusal_)};
}

bool DefaultsState::upkeep() {
    const std::lock_guard one(upkeep_);
    PendingChanges waiting;
    bool waits = false;
    {
        const std::lock_guard lock(mutex_);
        if (!checkpointer_ || !pending_.empty())
            storePending();
        waits = !checkpointer_ || !pending_.empty();
        if (!pending_.empty() && lastNumber_ != recovered_) {
            waiting = pending_;
            recovered_ = lastNumber_;
        }
    }
    if (!waiting.empty())
        writeRecoveryFile(waiting);
    syncLog(file_);
    if (!waits && mayHaveRecoveryFiles_)
        removeRecoveryFiles();
    return waits;
}

}  // namespace tembrix::sqlite
