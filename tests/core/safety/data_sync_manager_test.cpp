#include "core/safety/data_sync_manager.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>

#include "base/files.h"

#include "core/records/codec.h"
#include "core/storage/data_layout.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

bool logged(const CapturedLog& log, std::string_view part) {
    return log.contains(part);
}

TimelineLines oneLine(const std::string& name) {
    TimelineStamp stamp;
    stamp.id = Uuid::random();
    stamp.idTag = "shot";
    stamp.timeFinishSeconds = 4;
    stamp.label = "Shot";
    return {TimelineLine{Uuid::random(), name, {stamp}, ""}};
}

struct DataSyncTest : testing::Test {
    CoreProject project;
    DataSyncManager& sync = project.core.dataSync;

    std::string addCollection(const std::string& id, const std::string& name) {
        Tag tag;
        tag.id = "t-" + id;
        tag.name = name;
        CollectionData data;
        data.id = id;
        data.tags = {tag};
        project.storage.saveCollection(data);
        project.index.addOrUpdateCollection(id, name);
        return id;
    }
    fs::path documents() { return sync.documentsFolder(); }
};

TEST_F(DataSyncTest, TheFirstLaunchFindsNothingAndBacksUpTwoSecondsLater) {
    project.defaults.remove(layout::videosDataKey);
    sync.syncOnLaunch();
    project.scheduler.run();
    for (const char* item : {layout::collectionsFolder, layout::playFieldsFolder,
                             layout::timelinesFolder, "UserDefaults"})
        EXPECT_TRUE(
            logged(project.log, std::string("⚠️ DataSync: ") + item + " backup not found"));
    EXPECT_TRUE(logged(project.log, "No data in Documents, restoring from backup"));
    EXPECT_FALSE(project.defaults.date(layout::lastSyncDateKey));
    project.scheduler.advance(1.9);
    EXPECT_FALSE(logged(project.log, "Backup created successfully"));
    project.scheduler.advance(0.2);
    EXPECT_TRUE(logged(project.log, "Backup created successfully"));
    EXPECT_TRUE(project.defaults.date(layout::lastSyncDateKey));
}

TEST_F(DataSyncTest, EverythingComesBackAfterTheDefaultsAndTheDocumentsAreLost) {
    const auto id = project.addVideo();
    const TimelineLines lines = oneLine("Attack");
    project.storage.saveTimeline(lines, id);
    addCollection("C1", "Hockey");
    fs::create_directories(documents() / layout::playFieldsFolder);
    project.folder.write("Documents/Tembrix-Stat/PlayFields/Hockey.png", "picture");
    EXPECT_TRUE(sync.backUpNow());

    for (const auto& key : project.defaults.keys(""))
        project.defaults.remove(key);
    fs::remove_all(documents());
    bool told = false;
    sync.setRestored([&] { told = true; });
    sync.syncOnLaunch();
    project.scheduler.run();

    EXPECT_TRUE(told);
    EXPECT_EQ(project.storage.loadTimeline(id), lines);
    EXPECT_EQ(project.index.collections(), (std::vector<CollectionInfo>{{"C1", "Hockey"}}));
    ASSERT_TRUE(project.storage.loadCollection("C1"));
    EXPECT_EQ(project.storage.loadCollection("C1")->tags.front().name, "Hockey");
    EXPECT_TRUE(fs::exists(documents() / "PlayFields/Hockey.png"));
    project.library.reloadFiles();
    ASSERT_EQ(project.library.files().size(), 1U);
    EXPECT_EQ(project.library.files().front().videoData.id, id);
}

TEST_F(DataSyncTest, DocumentsWinUnlessTheListWasWrittenAfterTheLastNotedBackup) {
    const auto id = project.addVideo();
    project.storage.saveTimeline(oneLine("Old"), id);
    EXPECT_TRUE(sync.backUpNow());
    // The date is later than that of the file, so nothing is restored although the content differs.
    project.defaults.setDate(layout::lastSyncDateKey, Date{4e9});
    project.library.renameVideo(project.library.files().front(), "Renamed");
    sync.syncOnLaunch();
    project.scheduler.run();
    EXPECT_TRUE(logged(project.log, "✅ DataSync: Data is identical"));
    // Without a date, the backup is restored.
    project.defaults.remove(layout::lastSyncDateKey);
    sync.syncOnLaunch();
    project.scheduler.run();
    EXPECT_TRUE(logged(project.log, "Differences found, restoring newer data from backup"));
    project.library.reloadFiles();
    EXPECT_NE(project.library.files().front().videoData.customName, "Renamed");
}

TEST_F(DataSyncTest, ADeletedVideosTimelineOutlastsTheNextBackups) {
    const auto id = project.addVideo();
    project.library.setDeletedTimelineKeeper(&sync);
    project.storage.saveTimeline(oneLine("Attack"), id);
    ASSERT_TRUE(project.library.deleteVideo(project.library.files().front()));
    EXPECT_TRUE(sync.backUpNow());
    const auto file = readFile(sync.backupTimelinesFolder() / (id + ".json"));
    ASSERT_TRUE(file.ok());
    const auto record = decode<OrphanedTimeline>(*file);
    ASSERT_TRUE(record.ok());
    EXPECT_EQ(record->videoName, "match.mp4");
    EXPECT_EQ(record->timelines.front()->name, "Attack");
    project.library.setDeletedTimelineKeeper(nullptr);
}

TEST_F(DataSyncTest, ACollectionThatLeftTheIndexLeavesTheBackupAndAMissingFolderKeepsItsOldCopy) {
    addCollection("C1", "Hockey");
    addCollection("C2", "Football");
    EXPECT_TRUE(sync.backUpNow());
    const fs::path copies = sync.backupRoot() / "Tembrix-Stat/Collections";
    ASSERT_TRUE(fs::exists(copies / "C1/tags.json"));

    project.storage.deleteCollection("C1");
    project.index.removeCollection("C1");
    project.defaults.remove(layout::collectionKey("C2"));
    fs::remove_all(documents() / "Collections/C2");
    EXPECT_TRUE(sync.backUpNow());
    EXPECT_FALSE(fs::exists(copies / "C1"));
    EXPECT_TRUE(fs::exists(copies / "C2/tags.json"));
    EXPECT_TRUE(logged(project.log, "Collection folder missing in Documents: Football"));
}

TEST_F(DataSyncTest, DeletingAllRemovesBothStoresAndTheNextBackupMakesTheFoldersAgain) {
    const auto id = project.addVideo();
    project.storage.saveTimeline(oneLine("Attack"), id);
    project.defaults.setData(layout::matchKey(id), toBytes("{}"));
    project.defaults.setText(layout::positionKey(id), "5");
    addCollection("C1", "Hockey");
    EXPECT_TRUE(sync.backUpNow());
    EXPECT_TRUE(sync.deleteAllData());
    EXPECT_TRUE(project.defaults.keys(layout::matchPrefix).empty());
    EXPECT_TRUE(project.defaults.keys(layout::positionPrefix).empty());
    sync.deleteBackupTimelines();
    EXPECT_FALSE(fs::exists(sync.backupRoot()));
    EXPECT_FALSE(fs::exists(documents() / layout::collectionsFolder));
    EXPECT_FALSE(project.defaults.data(layout::videosDataKey));
    EXPECT_TRUE(project.index.collections().empty());
    EXPECT_TRUE(project.defaults.data(layout::timelineKey(id)));  // not touched
    EXPECT_TRUE(sync.backUpNow());
    EXPECT_TRUE(fs::exists(sync.backupTimelinesFolder()));
}

// Counts the files that are encoded.
struct CountingPropertyList final : PropertyList {
    FakePropertyList list;
    mutable std::atomic<int> encoded = 0;
    Result<Bytes> encode(const std::map<std::string, Bytes>& values) const override {
        ++encoded;
        return list.encode(values);
    }
    Result<std::map<std::string, Bytes>> decode(BytesView file) const override {
        return list.decode(file);
    }
};

TEST(DataSyncEnd, WorkThatHasBegunEndsBeforeTheManagerAndNoOtherBegins) {
    int endedByWaiting = 0;
    for (unsigned seed = 0; seed < 8; ++seed) {
        SCOPED_TRACE(seed);
        CountingPropertyList propertyLists;
        CoreProject project;
        auto sync = std::make_unique<DataSyncManager>(DataSyncServices{
            project.defaults, project.storage, project.index, project.bookmarks, propertyLists,
            project.scheduler, project.folder.directories(), project.log});
        project.scheduler.interleave(seed);
        for (int i = 0; i < 3; ++i)
            sync->keepSecondCopy();
        for (unsigned steps = 0; steps < 3 + seed; ++steps)
            project.scheduler.step();
        const int before = propertyLists.encoded;
        sync.reset();
        const int atItsEnd = propertyLists.encoded;
        endedByWaiting += atItsEnd - before;
        project.scheduler.run();
        project.scheduler.runWhole();
        EXPECT_EQ(propertyLists.encoded, atItsEnd);
    }
    EXPECT_GT(endedByWaiting, 0);
}

}  // namespace
}  // namespace tembrix
