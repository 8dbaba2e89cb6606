#include "adapters/sqlite/sqlite_user_defaults.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <gtest/gtest.h>
#include <mutex>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "adapters/sqlite/stored_value.h"
#include "fakes/captured_log.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

using namespace std::chrono_literals;

struct Sqlite : testing::Test {
    TempFolder folder;
    CapturedLog log;
    const std::filesystem::path file = folder.path() / "defaults.db";

    SqliteUserDefaults open() { return SqliteUserDefaults(file, log); }

    // Stores `count` values of 100 KB, so that each uses pages of its own.
    void fill(int count) {
        auto defaults = open();
        for (int i = 0; i < count; ++i)
            defaults.setData("timeline_" + std::to_string(100 + i), valueOf(i));
        defaults.setText("lastSelectedCollection", "Футбол");
    }
    static Bytes valueOf(int i) { return Bytes(100'000, static_cast<std::uint8_t>(i + 1)); }

    void overwrite(std::uintmax_t at, const std::string& bytes) {
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(static_cast<std::streamoff>(at));
        stream << bytes;
    }
    std::filesystem::path aside(int number) {
        return folder.path() / ("defaults.db.damaged-" + std::to_string(number));
    }
    static void run(const std::filesystem::path& database, const char* sql) {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open(database.c_str(), &handle), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(handle);
    }
};

TEST_F(Sqlite, AStoredValueIsReadWhileTheDefaultsAreInUse) {
    EXPECT_FALSE(readStoredValue(file, "settings"));
    EXPECT_FALSE(std::filesystem::exists(file));
    auto defaults = open();
    defaults.setData("settings", Bytes{1, 2});
    defaults.setText("name", "text");
    EXPECT_EQ(readStoredValue(file, "settings"), (Bytes{1, 2}));
    EXPECT_FALSE(readStoredValue(file, "name"));
}

TEST_F(Sqlite, ValuesOutliveTheObject) {
    fill(3);
    const auto defaults = open();
    EXPECT_EQ(defaults.text("lastSelectedCollection"), "Футбол");
    EXPECT_EQ(defaults.data("timeline_102"), valueOf(2));
    EXPECT_TRUE(defaults.isDurable());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(Sqlite, TheStatusSaysWithinASecondThatTheDiskHasAll) {
    auto defaults = open();
    std::mutex mutex;
    std::vector<bool> told;
    defaults.setStatusChanged([&] {
        const std::lock_guard lock(mutex);
        told.push_back(defaults.status().synced);
    });
    for (int i = 0; i < 3; ++i)
        defaults.setText("key", "value");
    EXPECT_FALSE(defaults.status().synced);
    const auto begin = std::chrono::steady_clock::now();
    while (!defaults.status().synced && std::chrono::steady_clock::now() - begin < 5s)
        std::this_thread::sleep_for(10ms);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
    std::this_thread::sleep_for(20ms);
    defaults.setStatusChanged({});
    EXPECT_EQ(told, (std::vector{false, true}));
}

TEST_F(Sqlite, AFileThatIsNoDatabaseIsSetAsideUntouched) {
    const std::string garbage(200'000, '#');
    folder.write("defaults.db", garbage);
    {
        auto defaults = open();
        EXPECT_TRUE(defaults.isDurable());
        EXPECT_TRUE(log.contains("set aside as defaults.db.damaged-1"));
        defaults.setText("key", "value");
    }
    EXPECT_EQ(fileText(aside(1)), garbage);
    log.clear();
    EXPECT_EQ(open().text("key"), "value");
    EXPECT_TRUE(log.lines().empty());
    folder.write("defaults.db", garbage);  // the file set aside must not be overwritten
    open();
    EXPECT_EQ(fileText(aside(1)), garbage);
    EXPECT_EQ(fileText(aside(2)), garbage);
}

TEST_F(Sqlite, ADatabaseOfAnotherShapeIsSetAside) {
    run(file, "CREATE TABLE value(other); INSERT INTO value VALUES(1)");
    auto defaults = open();
    defaults.setText("key", "value");
    EXPECT_EQ(defaults.text("key"), "value");
    EXPECT_TRUE(std::filesystem::exists(aside(1)));
}

TEST_F(Sqlite, ATruncatedFileGivesBackWhatIsLeft) {
    fill(20);
    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    auto defaults = open();
    int found = 0;
    for (int i = 0; i < 20; ++i) {
        const auto value = defaults.data("timeline_" + std::to_string(100 + i));
        if (value) {
            EXPECT_EQ(value, valueOf(i));
            ++found;
        }
    }
    EXPECT_GT(found, 0);
    EXPECT_LT(found, 20);
    EXPECT_TRUE(std::filesystem::exists(aside(1)));
    EXPECT_TRUE(log.contains("values taken over from the damaged database"));
    defaults.setData("timeline_100", valueOf(50));
    EXPECT_EQ(defaults.data("timeline_100"), valueOf(50));
}

TEST_F(Sqlite, DamageAnywhereNeverStopsTheProgramNorGivesWrongValues) {
    fill(8);
    const std::string sound = fileText(file);
    for (std::size_t at = 0; at < sound.size(); at += sound.size() / 40) {
        SCOPED_TRACE(at);
        folder.write("defaults.db", sound);
        overwrite(at, std::string(5000, '\x5A'));
        auto defaults = open();
        for (int i = 0; i < 8; ++i) {
            const std::string key = "timeline_" + std::to_string(100 + i);
            (void)defaults.data(key);
            defaults.setData(key, valueOf(i + 1));
            EXPECT_EQ(defaults.data(key), valueOf(i + 1));
        }
        EXPECT_TRUE(defaults.isDurable());
    }
}

TEST_F(Sqlite, ValuesOfWrongTypesInTheFileReadAsAbsent) {
    fill(0);
    run(file,
        "INSERT INTO value VALUES('a', 0, 'text'), ('b', 1, x'00'), ('c', 2, 'x'), ('d', 3, 'yes'),"
        "('e', 77, 1), ('f', 'kind', NULL)");
    auto defaults = open();
    EXPECT_FALSE(defaults.data("a") || defaults.text("b") || defaults.date("c") ||
                 defaults.boolean("d") || defaults.data("e") || defaults.data("f"));
    EXPECT_EQ(defaults.keys("").size(), 7u);
    defaults.setBoolean("d", true);
    EXPECT_TRUE(defaults.boolean("d"));
}

TEST_F(Sqlite, TwoConnectionsSeeEachOther) {
    auto one = open();
    auto two = open();
    for (int i = 0; i < 50; ++i) {
        one.setData("one", valueOf(i));
        EXPECT_EQ(two.data("one"), valueOf(i));
        two.setText("two", std::to_string(i));
        EXPECT_EQ(one.text("two"), std::to_string(i));
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(Sqlite, WhereNothingCanBeWrittenItWorksInMemory) {
    folder.write("file", "");
    SqliteUserDefaults defaults(folder.path() / "file" / "defaults.db", log);
    EXPECT_FALSE(defaults.isDurable());
    EXPECT_TRUE(log.contains("working in memory"));
    defaults.setText("key", "value");
    EXPECT_EQ(defaults.text("key"), "value");
    EXPECT_EQ(defaults.keys("").size(), 1u);
}

TEST_F(Sqlite, AReadOnlyFolderStillGivesItsValues) {
    if (geteuid() == 0)
        GTEST_SKIP() << "the superuser writes everywhere";
    fill(2);
    using std::filesystem::perms;
    std::filesystem::permissions(file, perms::owner_read);
    std::filesystem::permissions(folder.path(), perms::owner_read | perms::owner_exec);
    {
        auto defaults = open();
        EXPECT_FALSE(defaults.isDurable());
        EXPECT_EQ(defaults.data("timeline_101"), valueOf(1));
        defaults.setText("key", "value");
        EXPECT_EQ(defaults.text("key"), "value");
    }
    std::filesystem::permissions(folder.path(), perms::owner_all);
}

TEST_F(Sqlite, TheLogIsCheckpointedAndDoesNotGrowWithoutEnd) {
    auto defaults = open();
    Bytes big(3'000'000, 1);
    std::uintmax_t largest = 0;
    for (int i = 0; i < 200; ++i) {
        std::fill(big.begin(), big.end(), static_cast<std::uint8_t>(i));
        defaults.setData("timeline_1", big);
        auto logFile = file;
        largest = std::max(largest, std::filesystem::file_size(logFile += "-wal"));
    }
    EXPECT_LT(largest, 200'000'000u);  // of 600 MB written
}

// Restarting the log waits for the disk, which must not happen in a key press.
TEST_F(Sqlite, TheLogIsRestartedWithoutACallersWrite) {
    auto defaults = open();
    const auto timesBegun = [&] {
        auto logFile = file;
        std::ifstream stream(logFile += "-wal", std::ios::binary);
        stream.seekg(12);
        unsigned char bytes[4] = {};
        stream.read(reinterpret_cast<char*>(bytes), 4);
        return (bytes[2] << 8) + bytes[3];
    };
    const int before = timesBegun();
    for (int i = 0; i < 6; ++i)  // enough to start one checkpoint
        defaults.setData("timeline_1", Bytes(3'000'000, static_cast<std::uint8_t>(i)));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (timesBegun() == before && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_EQ(timesBegun(), before + 1);
    EXPECT_EQ(defaults.data("timeline_1"), Bytes(3'000'000, 5));
}

// A child process writes values and reports each completed call. It is killed while writing.
TEST_F(Sqlite, AKilledProcessLosesNothingThatWasAcknowledged) {
    for (int round = 0; round < 8; ++round) {
        int channel[2];
        ASSERT_EQ(pipe(channel), 0);
        const pid_t child = fork();
        if (child == 0) {
            close(channel[0]);
            CapturedLog childLog;
            SqliteUserDefaults defaults(file, childLog);
            for (int i = 0;; ++i) {
                defaults.setText("count" + std::to_string(i % 3), std::to_string(i));
                defaults.setData("big", Bytes(1'000'000, static_cast<std::uint8_t>(i)));
                if (write(channel[1], &i, sizeof i) != sizeof i)
                    _exit(1);
            }
        }
        close(channel[1]);
        int acknowledged = -1;
        const int enough = 10 + round * 7;
        while (acknowledged < enough &&
               read(channel[0], &acknowledged, sizeof acknowledged) == sizeof acknowledged) {
        }
        kill(child, SIGKILL);
        while (read(channel[0], &acknowledged, sizeof acknowledged) == sizeof acknowledged) {
        }
        close(channel[0]);
        waitpid(child, nullptr, 0);
        ASSERT_GE(acknowledged, enough);

        const auto defaults = open();
        EXPECT_TRUE(log.lines().empty());
        const auto stored = std::stoi(*defaults.text("count" + std::to_string(acknowledged % 3)));
        EXPECT_EQ(stored, acknowledged);
        const auto big = defaults.data("big");
        ASSERT_EQ(big->size(), 1'000'000u);
        EXPECT_TRUE((*big)[0] == static_cast<std::uint8_t>(acknowledged) ||
                    (*big)[0] == static_cast<std::uint8_t>(acknowledged + 1));
        EXPECT_EQ(big->front(), big->back());
    }
}

}  // namespace
}  // namespace tembrix
