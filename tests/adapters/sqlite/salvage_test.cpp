// A damaged database is replaced only when everything that can be read of it is in the new one.

#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "fakes/captured_log.h"
#include "fakes/temp_folder.h"
#include "full_disk.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct Salvage : testing::Test {
    static constexpr int count = 60;

    TempFolder folder;
    CapturedLog log;
    const fs::path file = folder.path() / "data" / "defaults.db";

    SqliteUserDefaults open() { return SqliteUserDefaults(file, log); }
    static std::string key(int i) { return "timeline_" + std::to_string(100 + i); }
    static Bytes valueOf(int i) { return Bytes(100'000, static_cast<std::uint8_t>(i + 1)); }

    // All values can be read, but the table of the identity cannot.
    void makeDamaged() {
        {
            auto defaults = open();
            for (int i = 0; i < count; ++i)
                defaults.setData(key(i), valueOf(i));
        }
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
        sqlite3_stmt* find = nullptr;
        sqlite3_prepare_v2(handle, "SELECT rootpage FROM sqlite_schema WHERE name='store'", -1,
                           &find, nullptr);
        ASSERT_EQ(sqlite3_step(find), SQLITE_ROW);
        const auto page = sqlite3_column_int(find, 0);
        sqlite3_finalize(find);
        sqlite3_close(handle);
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp((page - 1) * 4096);
        stream.put(0x77);
    }
    // How many of the values are there as they were stored.
    int present(const SqliteUserDefaults& defaults) {
        int found = 0;
        for (int i = 0; i < count; ++i)
            found += defaults.data(key(i)) == valueOf(i) ? 1 : 0;
        return found;
    }
};

TEST_F(Salvage, OnAFullDiskTheDamagedDatabaseStaysUntilThereIsRoom) {
    makeDamaged();
    {
        const FullDisk full(150'000);  // room for a recovery file
        auto defaults = open();
        EXPECT_FALSE(defaults.isDurable());
        EXPECT_EQ(present(defaults), count);
        defaults.setText("kept", "value");
        defaults.setData(key(0), valueOf(7));
        defaults.makeDurable();
        EXPECT_EQ(defaults.data(key(0)), valueOf(7));
    }
    EXPECT_TRUE(fs::exists(file));
    auto defaults = open();
    EXPECT_TRUE(defaults.isDurable());
    EXPECT_TRUE(defaults.status().incidents.databaseReplaced);
    EXPECT_EQ(defaults.text("kept"), "value");
    EXPECT_EQ(defaults.data(key(0)), valueOf(7));
    EXPECT_EQ(present(defaults), count - 1);
    EXPECT_TRUE(fs::exists(file.parent_path() / "defaults.db.damaged-1"));
}

TEST_F(Salvage, ItIsTriedAgainInTheSameRun) {
    makeDamaged();
    auto limit = std::make_unique<FullDisk>(50'000);
    auto defaults = open();
    defaults.setData(key(0), valueOf(7));
    limit.reset();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!defaults.isDurable() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        defaults.makeDurable();
    }
    EXPECT_TRUE(defaults.status().allStored);
    EXPECT_EQ(present(defaults), count - 1);
    EXPECT_EQ(defaults.data(key(0)), valueOf(7));
    EXPECT_TRUE(defaults.keys("damaged_").empty()) << "the value that was changed was known";
}

TEST_F(Salvage, AKilledProcessLosesNothing) {
    makeDamaged();
    const fs::path sound = folder.path() / "before";
    fs::copy(file.parent_path(), sound, fs::copy_options::recursive);
    for (int round = 0; round < 12; ++round) {
        SCOPED_TRACE(round);
        fs::remove_all(file.parent_path());
        fs::copy(sound, file.parent_path(), fs::copy_options::recursive);
        const pid_t child = fork();
        if (child == 0) {
            CapturedLog childLog;
            const SqliteUserDefaults defaults(file, childLog);
            pause();
        }
        // Killed some time after the first sign of a second file.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        const auto files = [&] {
            int found = 0;
            for (const auto& entry : fs::directory_iterator(file.parent_path())) {
                const auto ending = entry.path().extension();
                found += ending != ".db" && ending != ".db-wal" && ending != ".db-shm" ? 1 : 0;
            }
            return found;
        };
        while (files() == 0 && std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(round * 2));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        auto defaults = open();
        EXPECT_TRUE(defaults.isDurable());
        EXPECT_EQ(present(defaults), count);
    }
}

// The steps of putting the new database in place, each of which may be the last one.
TEST_F(Salvage, AnInterruptedReplacementIsCompleted) {
    makeDamaged();
    const fs::path data = file.parent_path();
    const fs::path damaged = folder.path() / "damaged.db";
    fs::copy_file(file, damaged);
    { (void)open(); }
    const fs::path good = folder.path() / "good.db";
    fs::copy_file(file, good);
    for (int step = 0; step < 3; ++step) {
        SCOPED_TRACE(step);
        fs::remove_all(data);
        fs::create_directories(data);
        fs::copy_file(good, data / "defaults.db.salvaged");
        fs::copy_file(damaged, step < 2 ? file : data / "defaults.db.damaged-1");
        folder.write(step == 0 ? "data/defaults.db-wal" : "data/defaults.db.damaged-1-wal", "log");
        {
            auto defaults = open();
            EXPECT_EQ(present(defaults), count);
            EXPECT_TRUE(defaults.status().incidents.databaseReplaced);
        }
        EXPECT_EQ(fileText(data / "defaults.db.damaged-1"), fileText(damaged));
        EXPECT_EQ(fileText(data / "defaults.db.damaged-1-wal"), "log");
        EXPECT_FALSE(fs::exists(data / "defaults.db.salvaged"));
    }
}

}  // namespace
}  // namespace tembrix
