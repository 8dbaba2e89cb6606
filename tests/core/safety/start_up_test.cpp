// The order of start-up under interleaved background work.

#include "core/shell/start_up.h"

#include <atomic>
#include <cstddef>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/files.h"

#include "core/records/codec.h"
#include "core/storage/collection_files.h"
#include "core/storage/data_layout.h"
#include "season.h"

namespace tembrix {
namespace {

struct StartUpRaces : Season {
    static constexpr unsigned seeds = 30;

    static CollectionData collectionOf(const std::string& id, const std::string& tagName) {
        Tag tag;
        tag.id = "tag";
        tag.name = tagName;
        CollectionData data;
        data.id = id;
        data.tags = {tag};
        return data;
    }
};

TEST_F(StartUpRaces, TheDuplicateCleanUpKeepsTheNewestContentAndLeavesOneIndex) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SCOPED_TRACE(seed);
        Machine fresh;
        const fs::path folders = fresh.documents() / layout::collectionsFolder;
        ASSERT_TRUE(writeCollectionFiles(folders / "Hockey", collectionOf("", "old")));
        // Creation dates have the resolution of the file system's clock.
        while (creationDate(folders / "Hockey (1)").value_or(Date{0}) <=
               creationDate(folders / "Hockey")) {
            fs::remove_all(folders / "Hockey (1)");
            ASSERT_TRUE(writeCollectionFiles(folders / "Hockey (1)", collectionOf("", "new")));
        }
        const std::vector<CollectionInfo> listed{{"Hockey", "Hockey"}, {"Hockey (1)", "Hockey"}};
        ASSERT_TRUE(replaceFile(fresh.documents() / layout::collectionIndexFile, *encode(listed)));
        fresh.interleaving = seed;
        for (int launch = 0; launch < 2; ++launch) {
            RunningProgram started(fresh);
            started.scheduler.advance(40);
            ASSERT_TRUE(started.storage.loadCollection("Hockey"));
            EXPECT_EQ(started.storage.loadCollection("Hockey")->tags.front().name, "new");
            const std::vector<CollectionInfo> cleaned{{"Hockey", "Hockey"}};
            EXPECT_EQ(started.index.collections(), cleaned);
            EXPECT_EQ(
                decode<std::vector<CollectionInfo>>(*readFile(started.index.indexFile())).value(),
                cleaned);
        }
    }
}

TEST_F(StartUpRaces, ARestoreOfLostDefaultsIsNotOverwrittenByOldDocuments) {
    openVideo();
    mark(500);
    program->scheduler.advance(31);  // the documents differ from the backup
    const fs::path spare = machine.folder.path() / "spare";
    fs::copy(machine.documents(), spare, fs::copy_options::recursive);
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SCOPED_TRACE(seed);
        program.reset();
        machine.loseDefaults();
        fs::remove_all(machine.documents());
        fs::copy(spare, machine.documents(), fs::copy_options::recursive);
        machine.interleaving = seed;
        restart();
        EXPECT_TRUE(logged("Differences found"));
        expectAllThere();
        program->scheduler.advance(40);
        expectAllThere();
        EXPECT_EQ(readFile(program->storage.timelineFile(video)).value(), encode(marked).value());
    }
}

TEST_F(StartUpRaces, AListReadFromTheFileNeverReplacesANewerOne) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        SCOPED_TRACE(seed);
        Machine fresh;
        fresh.interleaving = seed;
        RunningProgram started(fresh);
        const std::vector<CollectionInfo> old{{"A", "Old"}};
        const std::vector<CollectionInfo> right{{"B", "New"}};
        auto& index = started.index;
        const auto put = [&](const std::vector<CollectionInfo>& list) {
            return index.replaceIndexFile(
                [&] { return replaceFile(index.indexFile(), *encode(list)); });
        };
        ASSERT_TRUE(put(old));
        for (int i = 0; i < 3; ++i)
            started.scheduler.background(Priority::utility, [&] { (void)index.collections(); });
        started.scheduler.background(Priority::utility, [&] { ASSERT_TRUE(put(right)); });
        started.scheduler.background(Priority::utility, [&] { (void)index.collections(); });
        started.scheduler.run();
        EXPECT_EQ(index.collections(), right);
    }
}

TEST_F(StartUpRaces, WhatWaitsForTheLaunchWorkRunsWhenItHasEndedAndOnlyOnce) {
    program.reset();
    FakePlatform platform;
    CoreServices core(platform.platform({}), platform.noWindows);
    int runs = 0;
    core.startUp.whenReady([&] { ++runs; });
    EXPECT_EQ(core.startUp.stage(), StartUp::Stage::waiting);
    core.start();
    EXPECT_EQ(core.startUp.stage(), StartUp::Stage::synchronizing);
    EXPECT_TRUE(core.tagLibrary.standardCollections->empty()) << "no collections before it ended";
    EXPECT_EQ(runs, 0);
    platform.scheduler.run();
    EXPECT_EQ(core.startUp.stage(), StartUp::Stage::ready);
    EXPECT_FALSE(core.tagLibrary.standardCollections->empty());
    EXPECT_EQ(runs, 1);
    core.startUp.whenReady([&] { ++runs; });
    EXPECT_EQ(runs, 2);
}

// Tasks that read a value and write it back lose updates in some orders, which depend on the seed.
TEST(Interleaving, FindsALostUpdateAndFindsItAgainWithTheSameSeed) {
    const auto updatesWith = [](unsigned seed) {
        VirtualScheduler scheduler;
        MemoryUserDefaults defaults;
        scheduler.interleave(seed);
        const auto add = [&] {
            const auto before = defaults.text("count").value_or("");
            defaults.setText("count", before + "1");
        };
        for (int i = 0; i < 3; ++i)
            scheduler.background(Priority::utility, add);
        bool told = false;
        scheduler.background(Priority::utility,
                             [&] { scheduler.onMainAndWait([&] { told = scheduler.isMain(); }); });
        scheduler.run();
        EXPECT_TRUE(told);
        return defaults.text("count")->size();
    };
    std::set<std::size_t> seen;
    for (unsigned seed = 0; seed < 12; ++seed) {
        const auto updates = updatesWith(seed);
        seen.insert(updates);
        EXPECT_EQ(updatesWith(seed), updates) << seed;
    }
    EXPECT_GT(seen.size(), 1U);
}

// A paused task that holds a lock does not block the tasks waiting for it forever.
TEST(Interleaving, LetsTheOwnerOfALockGoOn) {
    VirtualScheduler scheduler;
    MemoryUserDefaults defaults;
    std::mutex mutex;
    std::atomic<int> entered = 0;
    scheduler.interleave(3);
    const auto enter = [&] {
        const std::lock_guard lock(mutex);
        defaults.setBoolean("paused", true);
        ++entered;
    };
    for (int i = 0; i < 4; ++i)
        scheduler.background(Priority::utility, enter);
    while (entered == 0)
        scheduler.step();
    enter();
    scheduler.run();
    EXPECT_EQ(entered, 5);
}

}  // namespace
}  // namespace tembrix
