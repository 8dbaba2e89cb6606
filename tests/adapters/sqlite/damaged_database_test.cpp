// Damage to the database loses no marks: values are restored from the second copy and from the
// documents.

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

#include "base/files.h"
#include "base/uuid.h"

#include "adapters/sqlite/sqlite_user_defaults.h"
#include "core/composition/core_services.h"
#include "core/shell/project.h"
#include "fakes/fake_platform.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

// State that outlives the process, including a real database.
struct Disk {
    TempFolder folder;
    MemoryKeychain keychain;
    FakeBookmarks bookmarks;

    fs::path database() const {
        return folder.path() / "Application Support/tembrix-stat/defaults.sqlite";
    }
};

struct Program : FakePlatform {
    explicit Program(Disk& disk) : database(disk.database(), log) {
        Others others;
        others.directories = disk.folder.directories();
        others.defaults = &database;
        others.keychain = &disk.keychain;
        others.bookmarks = &disk.bookmarks;
        core = std::make_unique<CoreServices>(platform(others), noWindows);
        core->start();
        scheduler.run();
    }

    SqliteUserDefaults database;
    std::unique_ptr<CoreServices> core;
};

void damage(const fs::path& file, std::mt19937& random) {
    std::string content = fileText(file);
    ASSERT_FALSE(content.empty());
    const bool header = random() % 2 == 0;
    const std::size_t begin = header ? 0 : random() % content.size();
    for (std::size_t i = 0; i < 4096 && begin + i < content.size(); ++i)
        content[begin + i] = static_cast<char>(random());
    ASSERT_TRUE(replaceFile(file, toBytes(content)));
    fs::path log = file;
    log += "-wal";
    if (random() % 2 == 0)
        fs::remove(log);
}

TEST(DamagedDatabase, LosesNoMarkOfTheDay) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Disk disk;
        std::string video;
        TimelineLines day;
        {
            Program program(disk);
            const fs::path file = disk.folder.path() / "match.mp4";
            disk.bookmarks.add(file);
            CoreServices& core = *program.core;
            video = core.library.addVideoNamed(file, "Final")->videoData.id;
            program.scheduler.advance(3);  // the launch's backup
            Project project(core.projectServices, core.windows, core.windows);
            project.timeline.openTimeline(core.library.findById(video)->bookmark, {});
            project.timeline.addLine("Attack");
            for (int i = 0; i < 150; ++i) {
                TimelineStamp stamp;
                stamp.id = Uuid::random();
                stamp.idTag = "shot";
                stamp.timeStartSeconds = i;
                stamp.timeFinishSeconds = i + 5;
                project.timeline.appendStamp(project.timeline.lines->back()->id, stamp);
            }
            program.scheduler.advance(31);
            day = *project.timeline.lines;
        }
        damage(disk.database(), random);
        Program program(disk);
        ASSERT_EQ(program.core->library.videosData().size(), 1U);
        EXPECT_EQ(program.core->library.videosData().front().customName, "Final");
        EXPECT_EQ(program.core->storage.loadTimeline(video), day);
        program.scheduler.advance(40);
        EXPECT_EQ(program.core->storage.loadTimeline(video), day);
    }
}

}  // namespace
}  // namespace tembrix
