#include "adapters/sqlite/checkpointer.h"

#include <utility>

#include "adapters/sqlite/database.h"

namespace tembrix::sqlite {

namespace {

// The log is cut to size as it begins anew, which happens here.
constexpr const char* setUp =
    "PRAGMA synchronous=NORMAL;"
    "PRAGMA wal_autocheckpoint=0;"
    "PRAGMA journal_size_limit=67108864;";

// The first write after a whole checkpoint begins the log anew and syncs its head. This one takes
// that upon itself, so that no caller's write does; it changes nothing that anyone reads.
constexpr const char* beginLogAnew = "PRAGMA user_version=1";

}  // namespace

Checkpointer::Checkpointer(const std::filesystem::path& file)
    : file_(file), thread_([this] { work(); }) {}

Checkpointer::~Checkpointer() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void Checkpointer::wake() {
    {
        const std::lock_guard lock(mutex_);
        due_ = true;
    }
    changed_.notify_all();
}

void Checkpointer::wakeAndWait() {
    std::unique_lock lock(mutex_);
    due_ = true;
    const auto wanted = begun_ + 1;
    changed_.notify_all();
    changed_.wait(lock, [&] { return done_ >= wanted || ended_; });
}

void Checkpointer::work() {
    auto database = Database::open(file_, Access::readWrite);
    // A connection learns of the log when it first reads; before that a checkpoint does nothing.
    const bool able = database && database->run(setUp) == SQLITE_OK &&
                      database->run("SELECT count(*) FROM sqlite_schema") == SQLITE_OK;
    if (able)
        sqlite3_busy_handler(database->handle(), nullptr, nullptr);  // callers go first
    std::unique_lock lock(mutex_);
    // Without a checkpointer the log grows until the last connection closes; nothing is lost.
    ended_ = ended_ || !able;
    for (;;) {
        changed_.wait(lock, [this] { return due_ || ended_; });
        if (ended_)
            break;
        due_ = false;
        ++begun_;
        lock.unlock();
        // Passive: never makes a writer or a reader wait. What it leaves, the next one takes.
        int inLog = 0;
        int taken = 0;
        const int code = sqlite3_wal_checkpoint_v2(database->handle(), nullptr,
                                                   SQLITE_CHECKPOINT_PASSIVE, &inLog, &taken);
        if (code == SQLITE_OK && inLog > 0 && taken == inLog)
            database->run(beginLogAnew);
        lock.lock();
        done_ = begun_;
        changed_.notify_all();
    }
    changed_.notify_all();
}

}  // namespace tembrix::sqlite
