#include "adapters/sqlite/checkpointer.h"

#include <utility>

#include "adapters/sqlite/database.h"

namespace tembrix::sqlite {

namespace {

// The log is truncated to the size limit when it is restarted, which this connection does.
constexpr const char* setUp =
    "PRAGMA synchronous=NORMAL;"
    "PRAGMA wal_autocheckpoint=0;"
    "PRAGMA journal_size_limit=67108864;";

// The first write after a complete checkpoint restarts the log and syncs its header. This statement
// does that here, so that no caller waits for it. The value itself is not used.
constexpr const char* restartLog = "PRAGMA user_version=1";

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
    // A connection opens the log at its first read; a checkpoint before that has no effect.
    const bool able = database && database->run(setUp) == SQLITE_OK &&
                      database->run("SELECT count(*) FROM sqlite_schema") == SQLITE_OK;
    if (able)
        sqlite3_busy_handler(database->handle(), nullptr, nullptr);  // writers have priority
    std::unique_lock lock(mutex_);
    // Without checkpoints the log grows until the last connection is closed, but nothing is lost.
    ended_ = ended_ || !able;
    for (;;) {
        changed_.wait(lock, [this] { return due_ || ended_; });
        if (ended_)
            break;
        due_ = false;
        ++begun_;
        lock.unlock();
        // A passive checkpoint never blocks writers or readers. The next one copies what it leaves.
        int inLog = 0;
        int taken = 0;
        const int code = sqlite3_wal_checkpoint_v2(database->handle(), nullptr,
                                                   SQLITE_CHECKPOINT_PASSIVE, &inLog, &taken);
        if (code == SQLITE_OK && inLog > 0 && taken == inLog)
            database->run(restartLog);
        lock.lock();
        done_ = begun_;
        changed_.notify_all();
    }
    changed_.notify_all();
}

}  // namespace tembrix::sqlite
