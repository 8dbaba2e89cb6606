#include <cerrno>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <random>
#include <set>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/storage/data_layout.h"
#include "core/storage/in_memory_storage_manager.h"
#include "fakes/captured_log.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

extern char** environ;

namespace tembrix {
namespace {

// The marking process. It is killed when the object is destroyed.
class MarkingProcess {
  public:
    explicit MarkingProcess(const std::filesystem::path& folder) {
        int ends[2];
        if (pipe(ends) != 0)
            return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::string program = TEMBRIX_PRESS_UNTIL_KILLED;
        std::string argument = folder.string();
        char* arguments[] = {program.data(), argument.data(), nullptr};
        if (posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ) != 0)
            process_ = 0;
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = ends[0];
    }
    ~MarkingProcess() {
        kill();
        close(output_);
    }
    MarkingProcess(const MarkingProcess&) = delete;
    MarkingProcess& operator=(const MarkingProcess&) = delete;

    bool started() const { return process_ > 0; }

    // Reads its output for the given time or until it prints something.
    void listen(int milliseconds, bool untilFirst = false) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
            pollfd readable{output_, POLLIN, 0};
            if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) <= 0 ||
                !take() || untilFirst)
                return;
        }
    }
    void kill() {
        if (process_ <= 0)
            return;
        ::kill(process_, SIGKILL);
        int status = 0;
        waitpid(process_, &status, 0);
        wasKilled = WIFSIGNALED(status);
        process_ = 0;
        while (take()) {
        }
    }
    std::string printed;
    bool wasKilled = false;

  private:
    bool take() {
        char buffer[4096];
        const ssize_t size = read(output_, buffer, sizeof buffer);
        if (size > 0)
            printed.append(buffer, static_cast<std::size_t>(size));
        return size > 0;
    }
    pid_t process_ = 0;
    int output_ = -1;
};

std::vector<Uuid> wholeLines(const std::string& printed) {
    std::vector<Uuid> ids;
    std::size_t start = 0;
    for (auto end = printed.find('\n'); end != std::string::npos; end = printed.find('\n', start)) {
        if (const auto id = Uuid::parse(printed.substr(start, end - start)))
            ids.push_back(*id);
        start = end + 1;
    }
    return ids;
}

TEST(KilledProcessTest, EveryStampThatWasReportedIsThereAndTheDatabaseAlwaysOpens) {
    TempFolder folder;
    std::mt19937 random(std::random_device{}());
    std::vector<Uuid> reported;
    for (int round = 0; round < 30; ++round) {
        MarkingProcess process(folder.path());
        ASSERT_TRUE(process.started());
        // Most processes are killed while marking, some while starting.
        if (round % 6 != 5)
            process.listen(20000, true);
        process.listen(static_cast<int>(random() % 120));
        process.kill();
        ASSERT_TRUE(process.wasKilled);
        const auto ids = wholeLines(process.printed);
        EXPECT_TRUE(round % 6 == 5 || !ids.empty()) << "the process made no stamp";
        reported.insert(reported.end(), ids.begin(), ids.end());

        CapturedLog log;
        VirtualScheduler scheduler;
        SqliteUserDefaults defaults(folder.path() / "defaults.db", log);
        EXPECT_TRUE(defaults.isDurable());
        InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
        std::set<Uuid> stored;
        for (const std::string& key : defaults.keys(layout::timelinePrefix))
            for (const auto& line :
                 storage.loadTimeline(key.substr(std::strlen(layout::timelinePrefix))))
                for (const auto& stamp : line->stamps)
                    stored.insert(stamp->id);
        for (const Uuid& id : reported)
            ASSERT_TRUE(stored.contains(id)) << "lost in round " << round;
        EXPECT_TRUE(log.lines().empty()) << log.lines().front();
    }
    RecordProperty("stamps", static_cast<int>(reported.size()));
}

}  // namespace
}  // namespace tembrix
