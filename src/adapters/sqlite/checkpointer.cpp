#include "adapters/sqlite/checkpointer.h"

#include <utility>

#include "adapters/sqlite/database.h"

namespace tembrix::sqlite {

Checkpointer::Checkpointer(const std::filesystem::path& file)
    : file_(file), thread_([this] { work(); }) {}

Checkpointer::~Checkpointer() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void Checkpointer::wake() {
    {
        const std::lock_guard lock(mutex_);
        due_ = true;
    }
    changed_.notify_one();
}

void Checkpointer::work() {
    auto database = Database::open(file_, Access::readWrite);
    if (!database)
        return;  // the log then grows until the last connection closes; nothing is lost
    // A connection learns of the log when it first reads; before that a checkpoint does nothing.
    database->run("SELECT count(*) FROM sqlite_schema");
    for (;;) {
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return due_ || ended_; });
            if (ended_)
                return;
            due_ = false;
        }
        // Passive: never makes a writer or a reader wait. What it leaves, the next one takes.
        sqlite3_wal_checkpoint_v2(database->handle(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr,
                                  nullptr);
    }
}

}  // namespace tembrix::sqlite
