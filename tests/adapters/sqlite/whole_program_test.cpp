// The core on a real database whose file is cut, damaged or out of reach for a while.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <vector>

#include "base/files.h"
#include "base/uuid.h"

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/composition/core_services.h"
#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "fakes/fake_platform.h"
#include "full_disk.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct Program : private FakePlatform {
    Program(const Directories& place, UserDefaults& database, MemoryKeychain& secrets,
            FakeBookmarks& files)
        : core(platform({.directories = place,
                         .resources = folder.path() / "no resources",
                         .defaults = &database,
                         .keychain = &secrets,
                         .bookmarks = &files}),
               noWindows) {
        core.start();
        scheduler.run();
    }
    bool notified(SafetyNotice notice) const {
        const auto& notices = core.dataSync.notices();
        return std::find(notices.begin(), notices.end(), notice) != notices.end();
    }
    void flushAndBackUp() {
        scheduler.advance(31);
        EXPECT_TRUE(core.dataSync.backUpNow());
        scheduler.run();
    }

    using FakePlatform::scheduler;
    CoreServices core;
};

struct WholeProgram : testing::Test {
    TempFolder folder;
    CapturedLog log;
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;
    const fs::path disk = folder.path() / "disk";  // of the database
    const fs::path unplugged = folder.path() / "unplugged";
    const fs::path file = folder.path() / "data" / "defaults.db";
    std::unique_ptr<SqliteUserDefaults> defaults;
    std::unique_ptr<Program> program;
    std::string video;
    CollectionData collection;

    void SetUp() override {
        fs::create_directories(disk);
        fs::create_directories(file.parent_path());
        fs::create_symlink(disk / "defaults.db", file);
        const fs::path match = folder.path() / "match.mp4";
        bookmarks.add(match);
        start();
        video = program->core.library.addVideoNamed(match, "First")->videoData.id;
        collection.id = "C";
        collection.tags.resize(1);
        work("First", 1);
        program->flushAndBackUp();
    }
    void start() {
        end();
        defaults = std::make_unique<SqliteUserDefaults>(file, log);
        program = std::make_unique<Program>(folder.directories(), *defaults, keychain, bookmarks);
    }
    void end() {
        program.reset();
        defaults.reset();
    }
    static TimelineLines linesOf(std::size_t count) {
        TimelineLines lines;
        for (std::size_t i = 0; i < count; ++i)
            lines.emplace_back(TimelineLine{
                *Uuid::parse("00000000-0000-4000-8000-00000000000" + std::to_string(i)),
                "Line",
                {},
                {}});
        return lines;
    }
    // Changes one value of each kind.
    void work(const std::string& name, std::size_t size) {
        auto& core = program->core;
        core.library.renameVideo(core.library.files().front(), name);
        core.storage.saveTimeline(linesOf(size), video);
        collection.tags.resize(size);
        core.storage.saveCollection(collection);
        core.index.addOrUpdateCollection(collection.id, name);
        program->scheduler.run();
    }
    void expectWork(const std::string& name, std::size_t size) {
        auto& core = program->core;
        ASSERT_EQ(core.library.videosData().size(), 1U);
        EXPECT_EQ(core.library.videosData().front().customName, name);
        EXPECT_EQ(core.storage.loadTimeline(video).size(), size);
        ASSERT_TRUE(core.storage.loadCollection(collection.id));
        EXPECT_EQ(core.storage.loadCollection(collection.id)->tags.size(), size);
        ASSERT_EQ(core.index.collections().size(), 1U);
        EXPECT_EQ(core.index.collections().front().name, name);
    }
    // Runs statements on the file while the program is not running.
    void sql(const std::string& statements) {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open((disk / "defaults.db").c_str(), &handle), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(handle, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(handle);
    }
    void damageTable(const std::string& table) {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open((disk / "defaults.db").c_str(), &handle), SQLITE_OK);
        sqlite3_exec(handle, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
        sqlite3_stmt* find = nullptr;
        const std::string sql = "SELECT rootpage FROM sqlite_schema WHERE name='" + table + "'";
        sqlite3_prepare_v2(handle, sql.c_str(), -1, &find, nullptr);
        ASSERT_EQ(sqlite3_step(find), SQLITE_ROW);
        const auto page = sqlite3_column_int(find, 0);
        sqlite3_finalize(find);
        sqlite3_close(handle);
        std::fstream stream(disk / "defaults.db", std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp((page - 1) * 4096);
        stream << std::string(64, '\x5A');
    }
};

// The log loses its end: the database is as it was at an earlier moment.
TEST_F(WholeProgram, ACutLogMakesNothingOlder) {
    const fs::path earlier = folder.path() / "earlier";
    fs::copy(disk, earlier);
    work("Second", 3);
    program->flushAndBackUp();
    end();
    fs::remove_all(disk);
    fs::copy(earlier, disk);
    start();
    EXPECT_TRUE(program->notified(SafetyNotice::newerCopiesUsed));
    for (int i = 0; i < 2; ++i) {
        expectWork("Second", 3);
        EXPECT_TRUE(program->core.dataSync.replacedStates().empty()) << "nothing was restored";
        program->flushAndBackUp();
        start();
        EXPECT_FALSE(program->notified(SafetyNotice::newerCopiesUsed));
    }
}

// The list of videos is as it was before two videos were added. There was no backup since.
TEST_F(WholeProgram, ALostLogLosesNoVideos) {
    const fs::path earlier = folder.path() / "earlier";
    end();
    fs::copy(disk, earlier);
    start();
    std::string second;
    for (const char* name : {"Second", "Third"}) {
        bookmarks.add(folder.path() / (std::string(name) + ".mp4"));
        second =
            program->core.library.addVideoNamed(folder.path() / (std::string(name) + ".mp4"), name)
                ->videoData.id;
    }
    program->core.storage.saveTimeline(linesOf(3), second);
    program->scheduler.advance(1);
    program->core.storage.flushNow();
    end();
    fs::remove_all(disk);
    fs::copy(earlier, disk);
    for (int i = 0; i < 2; ++i) {
        start();
        EXPECT_EQ(program->notified(SafetyNotice::newerCopiesUsed), i == 0);
        EXPECT_EQ(program->core.library.videosData().size(), 3U);
        EXPECT_EQ(program->core.storage.loadTimeline(second), linesOf(3));
        program->flushAndBackUp();
    }
}

// Its disk is missing during one run, and so is the second copy. The backup is older than both.
TEST_F(WholeProgram, AnUnreachableDatabaseComesBackWithItsOwnValues) {
    for (const bool inTheSameRun : {false, true}) {
        SCOPED_TRACE(inTheSameRun);
        start();
        work("Later", 4);
        end();  // before anything is written to the documents or the backup
        fs::rename(disk, unplugged);
        fs::remove(folder.path() / "Application Support/tembrix-stat/second-copy.plist");
        start();
        EXPECT_FALSE(defaults->isDurable());
        EXPECT_FALSE(program->notified(SafetyNotice::newerCopiesUsed));
        EXPECT_EQ(program->core.library.videosData().front().customName, "First");
        if (inTheSameRun) {
            fs::rename(unplugged, disk);
            program->flushAndBackUp();
            EXPECT_TRUE(defaults->isDurable());
        } else {
            program->scheduler.advance(31);
            end();
            fs::rename(unplugged, disk);
        }
        start();
        EXPECT_EQ(program->core.library.videosData().front().customName, "Later");
        EXPECT_EQ(program->core.storage.loadTimeline(video).size(), 4U);
        EXPECT_EQ(program->core.storage.loadCollection("C")->tags.size(), 4U);
        work("First", 1);
        program->flushAndBackUp();
    }
}

// It comes back while the library and a project are open with older values.
TEST_F(WholeProgram, AnOlderStateInMemoryDoesNotReplaceValuesThatCameBack) {
    work("Later", 4);
    const auto list = *defaults->data(layout::videosDataKey);
    end();
    fs::rename(disk, unplugged);
    fs::remove(folder.path() / "Application Support/tembrix-stat/second-copy.plist");
    start();
    EXPECT_EQ(program->core.storage.loadTimeline(video), linesOf(1));
    fs::rename(unplugged, disk);
    program->flushAndBackUp();
    ASSERT_TRUE(defaults->isDurable());
    EXPECT_TRUE(defaults->keys(layout::damagedPrefix).empty());
    for (std::size_t lines = 2; lines < 4; ++lines) {
        program->core.storage.saveTimeline(linesOf(lines), video);
        program->core.library.renameVideo(program->core.library.files().front(), "Mine");
        program->scheduler.run();
        EXPECT_EQ(defaults->data(layout::damagedKey(layout::timelineKey(video))),
                  encode(linesOf(4)).value());
        EXPECT_EQ(defaults->data(layout::damagedKey(layout::videosDataKey)), list);
        EXPECT_EQ(defaults->keys(layout::damagedPrefix).size(), 2U);
    }
    EXPECT_TRUE(program->notified(SafetyNotice::laterChangesUsed));
    EXPECT_EQ(program->core.storage.loadTimeline(video), linesOf(3));
}

TEST_F(WholeProgram, TheLogOfALinkedDatabaseIsSynced) {
    work("Second", 3);
    defaults->makeDurable();
    EXPECT_TRUE(defaults->status().synced);
}

// A repair that was made while the file could only be read is stored when it can be written.
TEST_F(WholeProgram, ARepairIsStoredAsSoonAsTheDatabaseCanBeWritten) {
    const fs::path earlier = folder.path() / "earlier";
    fs::copy(disk, earlier);
    work("Second", 3);
    program->flushAndBackUp();
    end();
    fs::remove_all(disk);
    fs::copy(earlier, disk);
    fs::remove(disk / "defaults.db-shm");
    {
        const FullDisk full(20'000);
        start();
        EXPECT_FALSE(defaults->isDurable());
        expectWork("Second", 3);
    }
    program->flushAndBackUp();
    EXPECT_TRUE(defaults->isDurable());
    expectWork("Second", 3);
    EXPECT_EQ(defaults->data(layout::timelineKey(video)), encode(linesOf(3)).value());
    fs::remove(folder.path() / "Application Support/tembrix-stat/second-copy.plist");
    start();
    expectWork("Second", 3);
}

TEST_F(WholeProgram, ADamagedDatabaseIsReplacedAndTheUserIsTold) {
    end();
    fs::resize_file(disk / "defaults.db", fs::file_size(disk / "defaults.db") / 2);
    start();
    EXPECT_TRUE(defaults->isDurable());
    EXPECT_TRUE(program->notified(SafetyNotice::databaseReplaced));
    expectWork("First", 1);
    program->core.dataSync.dismissNotices();
    program->flushAndBackUp();
    EXPECT_EQ(program->core.dataSync.notices(), std::vector<SafetyNotice>());
}

// The values are intact, but it is not known which of them are newer than their copies.
TEST_F(WholeProgram, ValuesThatLostTheirChangeNumbersAreNotReplacedByOlderCopies) {
    const fs::path copy = folder.path() / "Application Support/tembrix-stat/second-copy.plist";
    const fs::path earlier = folder.path() / "earlier";
    fs::copy_file(copy, earlier);
    work("Second", 3);
    end();  // before the documents are written
    fs::copy_file(earlier, copy, fs::copy_options::overwrite_existing);
    damageTable("change");
    start();
    EXPECT_TRUE(program->notified(SafetyNotice::databaseReplaced));
    EXPECT_FALSE(program->notified(SafetyNotice::newerCopiesUsed));
    for (int i = 0; i < 2; ++i) {
        expectWork("Second", 3);
        EXPECT_EQ(defaults->data(layout::damagedKey(layout::timelineKey(video))),
                  encode(linesOf(1)).value());
        program->flushAndBackUp();
        const auto document = readFile(program->core.storage.timelineFile(video));
        ASSERT_TRUE(document.ok());
        EXPECT_EQ(*document, encode(linesOf(3)).value());
        start();
        EXPECT_FALSE(program->notified(SafetyNotice::newerCopiesUsed));
    }
}

TEST_F(WholeProgram, AChangedBitInASmallValueIsNoticed) {
    end();
    sql("UPDATE value SET data = CAST(replace(data, 'Line', 'Lind') AS BLOB)"
        " WHERE key = 'timeline_" +
        video +
        "';"
        "UPDATE value SET data = CAST(replace(data, '\"id\":\"\"', '\"id\":\"?\"') AS BLOB)"
        " WHERE key = 'collection_C'");
    start();
    EXPECT_EQ(program->core.storage.loadTimeline(video), linesOf(1));
    EXPECT_EQ(program->core.storage.loadCollection("C"), collection);
    program->scheduler.run();
    EXPECT_TRUE(program->notified(SafetyNotice::damagedKept));
    EXPECT_EQ(defaults->keys(layout::damagedPrefix).size(), 2U);
    program->flushAndBackUp();
    expectWork("First", 1);
}

}  // namespace
}  // namespace tembrix
