// Disks that refuse writes: all marks must be there at the next start.

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "base/bytes.h"
#include "base/uuid.h"

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/records/annotation_records.h"
#include "core/records/codec.h"
#include "core/records/timeline_records.h"
#include "core/storage/in_memory_storage_manager.h"
#include "fakes/captured_log.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"
#include "full_disk.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct RefusedWrites : testing::Test {
    TempFolder folder;
    CapturedLog log;
    VirtualScheduler scheduler;
    const fs::path file = folder.path() / "data" / "defaults.db";
    const fs::path second = folder.path() / "second";

    SqliteUserDefaults open() {
        return SqliteUserDefaults(file, log, std::vector<fs::path>{second});
    }
    std::size_t recoveryFiles() const {
        std::size_t count = 0;
        for (const auto& entry : fs::recursive_directory_iterator(folder.path()))
            count += entry.path().extension() == ".recovery";
        return count;
    }
    static TimelineLines linesOf(int stamps) {
        TimelineLine line{Uuid::random(), "Line", {}, {}};
        for (int i = 0; i < stamps; ++i) {
            TimelineStamp stamp;
            stamp.id = Uuid::random();
            stamp.timeStartSeconds = i;
            stamp.timeFinishSeconds = i + 1.0;
            line.stamps.push_back(std::move(stamp));
        }
        return {std::move(line)};
    }
};

TEST_F(RefusedWrites, AFullDiskLosesNothingWhetherTheProgramQuitsOrIsKilled) {
    for (const bool killed : {false, true}) {
        SCOPED_TRACE(killed);
        const std::string text = killed ? "killed" : "quit";
        open().setData("grows the log and the file", Bytes(300'000, killed ? 1 : 2));
        const pid_t child = fork();
        if (child == 0) {
            auto defaults =
                std::make_unique<SqliteUserDefaults>(file, log, std::vector<fs::path>{second});
            defaults->setData("grows the log and the file", Bytes(300'000, 3));
            const FullDisk full(100'000);  // room for a recovery file, not for the log
            defaults->setText("kept", text);
            defaults->setData("data", Bytes(20'000, 4));
            defaults->remove("none");
            if (defaults->status().allStored || defaults->text("kept") != text)
                _exit(1);
            if (killed)
                defaults->makeDurable();  // as the upkeep does every second
            else
                defaults.reset();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_EQ(status, 0);
        EXPECT_EQ(recoveryFiles(), 1u);
        auto defaults = open();
        EXPECT_EQ(defaults.text("kept"), text);
        EXPECT_EQ(defaults.data("data"), Bytes(20'000, 4));
        EXPECT_TRUE(defaults.status().allStored);
        EXPECT_EQ(recoveryFiles(), 0u);
    }
}

TEST_F(RefusedWrites, ADatabaseThatCannotBeOpenedIsReplacedByARecoveryFile) {
    fs::create_directories(file);  // a folder at the path of the file
    {
        auto defaults = open();
        EXPECT_FALSE(defaults.isDurable());
        EXPECT_FALSE(defaults.status().allStored);
        defaults.setText("key", "value");
    }
    EXPECT_EQ(recoveryFiles(), 1u);
    {
        auto defaults = open();
        EXPECT_EQ(defaults.text("key"), "value");
        defaults.setText("other", "value");
        fs::remove(file);
        defaults.makeDurable();  // stored as soon as possible
        EXPECT_TRUE(defaults.isDurable());
        EXPECT_TRUE(defaults.status().allStored);
    }
    EXPECT_EQ(recoveryFiles(), 0u);
    EXPECT_EQ(open().text("key"), "value");
    EXPECT_EQ(open().text("other"), "value");
}

TEST_F(RefusedWrites, ADamagedRecoveryFileIsSetAside) {
    fs::create_directories(second);
    folder.write("second/unsaved-values.recovery", "TembrixRecovery1 and then nothing");
    const auto status = open().status();
    EXPECT_TRUE(status.allStored && status.incidents.recoveryFileDamaged);
    EXPECT_TRUE(log.contains("Unreadable recovery file"));
    EXPECT_TRUE(fs::exists(second / "unsaved-values.recovery.damaged-1"));
}

// The disk of the database is missing during one run of the program. When it is connected again,
// its working copies are older than the documents.
TEST_F(RefusedWrites, ADatabaseThatComesBackDoesNotReplaceNewerDocuments) {
    const fs::path disk = folder.path() / "disk";
    fs::create_directories(disk);
    fs::create_directories(file.parent_path());
    fs::create_symlink(disk / "defaults.db", file);
    const auto run = [&](const std::function<void(InMemoryStorageManager&)>& work) {
        auto defaults = open();
        InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
        work(storage);
        storage.flushNow();
    };
    const auto early = linesOf(3);
    const auto late = linesOf(50);
    run([&](auto& storage) { storage.saveTimeline(early, "V"); });
    fs::rename(disk, folder.path() / "unplugged");
    run([&](auto& storage) {
        EXPECT_EQ(storage.loadTimeline("V"), early);
        storage.saveTimeline(late, "V");
    });
    EXPECT_EQ(recoveryFiles(), 1u);
    fs::remove(file.parent_path() / "unsaved-values.recovery");  // that disk is missing as well
    fs::rename(folder.path() / "unplugged", disk);
    run([&](auto& storage) { EXPECT_EQ(storage.loadTimeline("V"), late); });
    EXPECT_EQ(fileText(folder.path() / "Documents/Tembrix-Stat/Timelines/V.json"),
              asText(encode(late).value()));
}

// A power failure may remove the end of the log, a bad disk may change any byte. What was flushed
// must not change.
TEST_F(RefusedWrites, NoDamageOfTheDatabaseMakesADocumentOlder) {
    const auto latest = linesOf(300);
    const pid_t child = fork();
    if (child == 0) {
        auto* defaults = new SqliteUserDefaults(file, log);  // not destroyed
        InMemoryStorageManager storage(*defaults, scheduler, folder.directories(), log);
        for (int stamps = 100; stamps < 300; stamps += 20)
            storage.saveTimeline(linesOf(stamps), "V");
        storage.saveTimeline(latest, "V");
        storage.flushNow();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    const fs::path data = folder.path() / "data";
    const fs::path documents = folder.path() / "Documents";
    const fs::path sound = folder.path() / "sound";
    fs::create_directories(sound);
    fs::copy(data, sound / "data", fs::copy_options::recursive);
    fs::copy(documents, sound / "Documents", fs::copy_options::recursive);
    const auto logSize = fs::file_size(sound / "data/defaults.db-wal");
    ASSERT_GT(logSize, 500'000u);
    for (int step = 0; step < 24; ++step) {
        SCOPED_TRACE(step);
        fs::remove_all(data);
        fs::remove_all(documents);
        fs::copy(sound / "data", data, fs::copy_options::recursive);
        fs::copy(sound / "Documents", documents, fs::copy_options::recursive);
        const auto at = logSize * static_cast<unsigned>(step % 12) / 12;
        if (step < 12) {
            fs::resize_file(data / "defaults.db-wal", at);
        } else {
            std::string bytes = fileText(data / "defaults.db-wal");
            bytes[at + 1000] = static_cast<char>(bytes[at + 1000] ^ 0x20);
            folder.write("data/defaults.db-wal", bytes);
        }
        SqliteUserDefaults defaults(file, log);
        InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
        EXPECT_EQ(storage.loadTimeline("V"), latest);
        storage.flushNow();
        EXPECT_EQ(fileText(documents / "Tembrix-Stat/Timelines/V.json"),
                  asText(encode(latest).value()));
    }
}

// A disk that refuses even the recovery file is asked again.
TEST_F(RefusedWrites, TheRecoveryFileIsTriedUntilItIsWritten) {
    auto defaults = open();
    defaults.setData("grows the log", Bytes(300'000, 1));
    {
        const FullDisk full(0);
        defaults.setText("kept", "value");
        defaults.makeDurable();
        EXPECT_EQ(recoveryFiles(), 0u);
    }
    const FullDisk nearlyFull(100'000);
    defaults.makeDurable();
    EXPECT_FALSE(defaults.status().allStored);
    EXPECT_EQ(recoveryFiles(), 1u);
}

// The documents are behind the database, which cannot be reached for one run.
TEST_F(RefusedWrites, WhatIsFilledFromOlderDocumentsDoesNotReplaceADatabaseThatComesBack) {
    const fs::path disk = folder.path() / "disk";
    fs::create_directories(disk);
    fs::create_directories(file.parent_path());
    fs::create_symlink(disk / "defaults.db", file);
    const auto older = linesOf(8);
    const auto newer = linesOf(48);
    const auto marked = linesOf(9);
    CollectionData collection;
    collection.id = "C";
    collection.tags.resize(2);
    {
        auto defaults = open();
        InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
        storage.saveTimeline(older, "V");
        storage.saveTimeline(older, "W");
        storage.saveCollection(collection);
        storage.flushNow();
        storage.saveTimeline(newer, "V");
        storage.saveTimeline(newer, "W");
        collection.tags.resize(9);
        storage.saveCollection(collection);
    }
    fs::rename(disk, folder.path() / "unplugged");
    {
        auto defaults = open();
        InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
        EXPECT_EQ(storage.loadTimeline("V"), older);
        EXPECT_EQ(storage.loadTimeline("W"), older);
        EXPECT_EQ(storage.loadCollection("C")->tags.size(), 2u);
        storage.saveTimeline(marked, "W");
        storage.flushNow();
        EXPECT_EQ(storage.loadTimeline("V"), older);
    }
    fs::rename(folder.path() / "unplugged", disk);
    auto defaults = open();
    InMemoryStorageManager storage(defaults, scheduler, folder.directories(), log);
    EXPECT_EQ(storage.loadTimeline("V"), newer);
    EXPECT_EQ(storage.loadCollection("C"), collection);
    // What the user marked meanwhile comes first, and what it would replace is kept.
    EXPECT_EQ(storage.loadTimeline("W"), marked);
    EXPECT_EQ(defaults.data("damaged_timeline_W"), encode(newer).value());
    EXPECT_EQ(defaults.keys("damaged_").size(), 1u);
    EXPECT_TRUE(defaults.status().incidents.valuesSetAside);
    storage.flushNow();
    EXPECT_EQ(fileText(folder.path() / "Documents/Tembrix-Stat/Timelines/V.json"),
              asText(encode(newer).value()));
}

// A killed process leaves its log. Without room for the index of the log, nothing older is shown.
TEST_F(RefusedWrites, AFullDiskDoesNotHideTheLog) {
    open().setText("key", "old");
    const pid_t child = fork();
    if (child == 0) {
        auto* defaults = new SqliteUserDefaults(file, log);  // never ends
        defaults->setData("grows the log", Bytes(300'000, 1));
        defaults->setText("key", "new");
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    fs::remove(file.parent_path() / "defaults.db-shm");
    {
        const FullDisk full(20'000);
        auto defaults = open();
        EXPECT_FALSE(defaults.isDurable());
        EXPECT_EQ(defaults.text("key"), "new");
    }
    auto defaults = open();
    EXPECT_TRUE(defaults.isDurable());
    EXPECT_EQ(defaults.text("key"), "new");
    EXPECT_EQ(defaults.data("grows the log"), Bytes(300'000, 1));
}

TEST_F(RefusedWrites, ADatabaseOfTheFormerFormIsConverted) {
    fs::create_directories(file.parent_path());
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(handle,
                           "PRAGMA page_size=65536; PRAGMA journal_mode=WAL;"
                           "CREATE TABLE value(key TEXT PRIMARY KEY NOT NULL, kind INTEGER NOT "
                           "NULL, data) WITHOUT ROWID;"
                           "INSERT INTO value VALUES('timeline_V', 0, zeroblob(3000000)),"
                           "('lastSelectedCollection', 1, 'Hockey')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(handle);
    {
        auto defaults = open();
        EXPECT_EQ(defaults.data("timeline_V"), Bytes(3'000'000));
        EXPECT_EQ(defaults.text("lastSelectedCollection"), "Hockey");
        EXPECT_GT(defaults.changeNumber("timeline_V"), 0u);
        defaults.setData("timeline_V", Bytes(2'000'000, 1));
    }
    EXPECT_EQ(open().data("timeline_V"), Bytes(2'000'000, 1));
    const std::string header = fileText(file).substr(16, 2);
    EXPECT_EQ(header, std::string("\x10\0", 2));  // pages of 4 KB
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace tembrix
