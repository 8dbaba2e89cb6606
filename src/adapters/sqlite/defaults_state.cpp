#include "adapters/sqlite/defaults_state.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/bytes.h"
#include "base/files.h"

#include "adapters/sqlite/database.h"

namespace tembrix::sqlite {

namespace {

constexpr int checkpointPages = 4096;  // the log size that starts a checkpoint: 16 MB
// 128 MB: the checkpointer is too slow, so the writer waits for it once. Marking by hand is not
// that fast.
constexpr int fullLogPages = 32768;

// Syncs what has been written to the log. SQLite holds no locks on this file, so another descriptor
// can be used.
bool syncLog(std::filesystem::path database) {
    const int descriptor = ::open((database += "-wal").c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fdatasync(descriptor) == 0;
    ::close(descriptor);
    return synced;
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

// SQLite creates the log beside the file itself. The file need not exist.
std::filesystem::path withoutLinks(std::filesystem::path file) {
    std::error_code error;
    for (int links = 0; links < 40 && std::filesystem::is_symlink(file, error); ++links) {
        const auto target = std::filesystem::read_symlink(file, error);
        if (error)
            break;
        file = file.parent_path() / target;
    }
    return file;
}

// The caller's list of pieces is copied, so that the change can be kept.
void ownPieces(PendingChange& change) {
    if (auto* pieces = change.value ? std::get_if<SharedPieces>(&*change.value) : nullptr)
        *pieces = std::make_shared<const ValuePieces>(**pieces);
}

// Empty for a value that is not data.
Bytes bytesOf(const StoredValue& value) {
    if (const auto* pieces = std::get_if<SharedPieces>(&value))
        return joined(**pieces);
    const auto* bytes = std::get_if<Bytes>(&value);
    return bytes ? *bytes : Bytes();
}

}  // namespace

DefaultsState::DefaultsState(const std::filesystem::path& file, Log& log,
                             std::vector<std::filesystem::path> recoveryFolders)
    : file_(withoutLinks(file)), log_(log), folders_(std::move(recoveryFolders)) {
    folders_.insert(folders_.begin(), file.parent_path());
    (void)makeFolder(file.parent_path());
    open();
    takeInRecoveryFiles();
}

int DefaultsState::attempt(const std::function<int(ValueStore&)>& operation) const {
    int code = operation(*store_);
    if (isDamage(code) && checkpointer_) {
        store_->database().leaveLog();
        store_.reset();
        checkpointer_.reset();
        open(code);
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
    const auto earlier = pending_.find(key);
    if (!checkpointer_ && RepairScope::active() && earlier == pending_.end()) {
        repair(key, std::move(change));
        return true;
    }
    change.number = ++lastNumber_;
    ++changes_;
    int code = SQLITE_FULL;
    // While changes are pending, upkeep() stores them, so that a key press does not wait for a
    // failing disk.
    const bool open = checkpointer_ && pending_.empty();
    if (open)
        code = attempt([&](ValueStore& store) {
            if (!checkpointer_)
                return refusal_;
            if (const auto unknown = unknown_.find(key); unknown != unknown_.end()) {
                change.base = unknown->second;
                const int kept = keepUnknown(store, unknown->first, change);
                if (kept != SQLITE_DONE)
                    return kept;
            }
            return store.apply(key, change);
        });
    if (code == SQLITE_DONE && checkpointer_) {
        if (const auto unknown = unknown_.find(key); unknown != unknown_.end())
            unknown_.erase(unknown);
        return true;
    }
    if (open)
        refused(code);
    ownPieces(change);
    change.base = earlier != pending_.end() ? earlier->second.base : storedNumber(key);
    repairs_.erase(std::string(key));
    pending_.insert_or_assign(std::string(key), std::move(change));
    return false;
}

// The number of the value in the file that the program knows.
std::uint64_t DefaultsState::storedNumber(std::string_view key) const {
    if (const auto repaired = repairs_.find(key); repaired != repairs_.end())
        return repaired->second.base;
    if (const auto unknown = unknown_.find(key); unknown != unknown_.end())
        return unknown->second;
    std::uint64_t number = 0;
    (void)store_->number(key, number);
    return number;
}

// Called without a file. The value has no number, because it is not known yet whether it is newer
// than that in the file.
void DefaultsState::repair(std::string_view key, PendingChange change) {
    ownPieces(change);
    change.base = storedNumber(key);
    change.number = 0;
    (void)store_->apply(key, change);
    repairs_.insert_or_assign(std::string(key), std::move(change));
}

// The file can be used again. A repair is stored if the file still has the value for which it was
// made. Otherwise the file knows better, because its value could not be read then.
void DefaultsState::adoptRepairs() {
    for (auto& [key, change] : std::exchange(repairs_, {})) {
        std::uint64_t number = 0;
        if (failed(store_->number(key, number)) || number != change.base)
            continue;
        change.number = ++lastNumber_;
        pending_.try_emplace(key, std::move(change));
    }
}

// The file can be used again. What the program has read meanwhile, such as the open project, may be
// older than the values of the file, and will be stored as a whole with its next change.
void DefaultsState::noteUnknown(ValueStore& memory) {
    std::vector<std::string> keys;
    (void)store_->list({}, keys);
    for (const auto& key : keys) {
        std::uint64_t known = 0;
        std::uint64_t number = 0;
        if (const auto repaired = repairs_.find(key); repaired != repairs_.end())
            known = repaired->second.base;
        else
            (void)memory.number(key, known);
        if (!failed(store_->number(key, number)) && number != known)
            unknown_.try_emplace(key, known);
    }
}

void DefaultsState::storePending() {
    if (!checkpointer_) {
        std::string reason;
        auto memory = std::move(store_);
        if (const int code = openOrReplace(reason); code != SQLITE_OK) {
            store_ = std::move(memory);
            return refused(code);
        }
        noteUnknown(*memory);
        // The file may have another identity and higher numbers than assumed so far.
        for (auto& [key, change] : pending_)
            change.number = ++lastNumber_;
        adoptRepairs();
        log_.line("✅ UserDefaults: Database can be written again");
    }
    while (!pending_.empty()) {
        const auto first = pending_.begin();
        const int code = attempt([&](ValueStore& store) {
            if (!checkpointer_)
                return refusal_;
            const int kept = keepUnknown(store, first->first, first->second);
            return kept == SQLITE_DONE ? store.apply(first->first, first->second) : kept;
        });
        if (code != SQLITE_DONE || !checkpointer_)
            return refused(code);
        unknown_.erase(first->first);
        pending_.erase(first);
    }
}

// The stored value is another one than the change was made to, because it could not be read then.
// It is kept under another key.
int DefaultsState::keepUnknown(ValueStore& store, const std::string& key,
                               const PendingChange& change) {
    std::uint64_t number = 0;
    if (const int code = store.number(key, number); failed(code))
        return code;
    if (number == change.base)
        return SQLITE_DONE;
    std::optional<StoredValue> stored;
    if (const int code = store.read(key, stored); failed(code))
        return code;
    const auto* content = stored ? std::get_if<Bytes>(&*stored) : nullptr;
    if (!content || (change.value && bytesOf(*change.value) == *content))
        return SQLITE_DONE;
    const std::string base = setAsidePrefix + key;
    std::string name = base;
    for (int count = 2;; ++count) {
        std::optional<StoredValue> present;
        if (const int code = store.read(name, present); failed(code))
            return code;
        if (!present)
            break;
        if (bytesOf(*present) == *content)
            return SQLITE_DONE;
        name = base + "_" + std::to_string(count);
    }
    const int code = store.apply(name, {std::move(stored), ++lastNumber_});
    if (code == SQLITE_DONE) {
        incidents_.valuesSetAside = true;
        log_.line("⚠️ UserDefaults: A value that could not be read before is kept as " + name);
    }
    return code;
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
        return {true, {}, StorageFault::other, synced_ == changes_, incidents_};
    return {false, sqlite3_errstr(refusal_), faultOf(refusal_), false, incidents_};
}

bool DefaultsState::upkeep() {
    const std::lock_guard one(upkeep_);
    PendingChanges waiting;
    bool waits = false;
    std::uint64_t last = 0;
    std::uint64_t changes = 0;
    {
        const std::lock_guard lock(mutex_);
        if (!checkpointer_ || !pending_.empty())
            storePending();
        waits = !checkpointer_ || !pending_.empty();
        last = lastNumber_;
        changes = changes_;
        if (!pending_.empty() && last != recovered_)
            waiting = pending_;
    }
    if (!waiting.empty() &&
        writeRecoveryFile(waiting, std::exchange(triedToRecover_, last) != last))
        recovered_ = last;
    if (syncLog(file_)) {
        const std::lock_guard lock(mutex_);
        synced_ = changes;
    }
    if (!waits && mayHaveRecoveryFiles_)
        removeRecoveryFiles();
    return waits;
}

}  // namespace tembrix::sqlite
