// Single damaged bytes in stored data: no readable copy is replaced by an unreadable one.

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/files.h"

#include "core/records/codec.h"
#include "core/records/orphaned_timeline.h"
#include "core/storage/data_layout.h"
#include "season.h"

namespace tembrix {
namespace {

struct DamagedData : Season {
    std::mt19937 random{7};

    Bytes flipped(Bytes bytes) {
        bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
        return bytes;
    }
    void flip(const fs::path& file) {
        const auto content = readFile(file);
        ASSERT_TRUE(content.ok()) << file;
        ASSERT_TRUE(replaceFile(file, flipped(*content)).ok());
    }
    void spoilWorkingCopies() {
        machine.defaults->setData(layout::timelineKey(video), toBytes("[{"));
        spoil(program->storage.timelineFile(video), "[{");
    }
    fs::path record() {
        return machine.backup() / layout::timelinesFolder / (video + layout::recordExtension);
    }
    fs::path savedCollection() { return program->sync.savedCollectionFolder(hockey.id); }
};

TEST_F(DamagedData, AFlippedByteInTheListOfVideosLosesNothing) {
    program->scheduler.run();
    const Bytes good = *machine.defaults->data(layout::videosDataKey);
    for (int i = 0; i < 25; ++i) {
        const Bytes damaged = flipped(good);
        machine.defaults->setData(layout::videosDataKey, damaged);
        restart();
        expectAllThere();
        EXPECT_EQ(machine.defaults->data(layout::videosDataKey), good);
        bool kept = false;
        for (const auto& key : machine.defaults->keys(layout::damagedPrefix))
            kept = kept || machine.defaults->data(key) == damaged;
        EXPECT_TRUE(kept);
        EXPECT_TRUE(notified(SafetyNotice::videoListRepaired));
    }
}

// Most of these lists can still be read, with a changed name or bookmark.
TEST_F(DamagedData, AFlippedByteInTheListOfVideosIsFoundWithTheBackupAlone) {
    program->scheduler.run();
    const Bytes good = *machine.defaults->data(layout::videosDataKey);
    for (int i = 0; i < 25; ++i) {
        program.reset();
        fs::remove(machine.secondCopy());
        machine.defaults->setData(layout::videosDataKey, flipped(good));
        restart();
        expectAllThere();
        EXPECT_EQ(machine.defaults->data(layout::videosDataKey), good);
        EXPECT_TRUE(notified(SafetyNotice::videoListRepaired));
    }
}

TEST_F(DamagedData, AGoodListOfVideosStaysWhateverItsCheckSays) {
    const auto rename = [&](const std::string& name) {
        program->library.renameVideo(program->library.files().front(), name);
        program->scheduler.run();  // no time passes, so that there is no backup
        return *machine.defaults->data(layout::videosDataKey);
    };
    const auto noticesOfNextStart = [&] {
        restart();
        EXPECT_EQ(program->library.videosData().front().customName, "Newer");
        EXPECT_FALSE(machine.defaults->data(layout::damagedKey(layout::videosDataKey)));
        return program->sync.notices();
    };
    const std::vector<SafetyNotice> none;
    const Bytes newer = rename("Newer");
    machine.defaults->setText(layout::videosCheckKey, "damaged");
    EXPECT_EQ(noticesOfNextStart(), none);
    machine.defaults->setText(layout::videosCheckKey, "damaged");
    fs::remove(machine.secondCopy());
    EXPECT_EQ(noticesOfNextStart(), std::vector{SafetyNotice::videoListDoubtful});
    program->sync.dismissNotices();
    machine.defaults->remove(layout::videosCheckKey);
    EXPECT_EQ(noticesOfNextStart(), none);

    // The process was killed between writing the check of a list and the list.
    rename("Newer");
    rename("Newest");
    fs::remove(machine.secondCopy());
    machine.defaults->setData(layout::videosDataKey, newer);
    EXPECT_EQ(noticesOfNextStart(), none);
}

// The second copy is damaged, and the backup is older by two changes.
TEST_F(DamagedData, ADoubtfulListOfVideosDoesNotReplaceTheBackupsForGood) {
    const auto name = [&] { return program->library.videosData().front().customName; };
    const auto saved = name();
    for (const char* newer : {"Newer", "Newest"})
        program->library.renameVideo(program->library.files().front(), newer);
    program->scheduler.run();
    program.reset();
    fs::remove(machine.secondCopy());
    std::string damaged(asText(*machine.defaults->data(layout::videosDataKey)));
    damaged.replace(damaged.find("Newest"), 1, "M");
    machine.defaults->setData(layout::videosDataKey, toBytes(damaged));
    for (int starts = 0; starts < 3; ++starts) {
        restart();
        EXPECT_EQ(name(), "Mewest");
        EXPECT_TRUE(notified(SafetyNotice::videoListDoubtful)) << "until the user knows";
        EXPECT_TRUE(program->sync.backUpNow());
    }
    program->sync.dismissNotices();
    restart();
    EXPECT_FALSE(notified(SafetyNotice::videoListDoubtful));
    const auto states = program->sync.replacedStates();
    ASSERT_EQ(states.size(), 1U);
    EXPECT_TRUE(program->sync.bringBack(states.front().name));
    program->scheduler.run();
    EXPECT_EQ(name(), saved);
}

TEST_F(DamagedData, AnUnreadableListOfVideosIsTakenFromTheBackupWhichStaysGood) {
    fs::remove(machine.secondCopy());
    machine.defaults->setData(layout::videosDataKey, toBytes("[{\"bookmark\""));
    restart();
    expectAllThere();
    EXPECT_TRUE(notified(SafetyNotice::videoListRepaired));
    EXPECT_EQ(machine.defaults->data(layout::damagedKey(layout::videosDataKey)),
              toBytes("[{\"bookmark\""));
    const fs::path second = machine.folder.path() / "second.mp4";
    machine.bookmarks.add(second);
    ASSERT_TRUE(program->library.addVideoNamed(second, "Second"));
    EXPECT_TRUE(program->sync.backUpNow());
    machine.loseDefaults();
    restart();
    EXPECT_EQ(program->library.videosData().size(), 2U);
}

// The backup cannot be read at launch, but later it can.
TEST_F(DamagedData, AListOfVideosStartedAgainDoesNotReplaceTheBackupsForGood) {
    fs::remove(machine.secondCopy());
    machine.defaults->setData(layout::videosDataKey, toBytes("[{"));
    const Bytes saved = *readFile(plist());
    fs::remove(plist());
    restart();
    EXPECT_TRUE(notified(SafetyNotice::videoListUnreadable));
    EXPECT_TRUE(program->library.videosData().empty());
    const fs::path second = machine.folder.path() / "second.mp4";
    machine.bookmarks.add(second);
    ASSERT_TRUE(program->library.addVideoNamed(second, "Second"));
    ASSERT_TRUE(replaceFile(plist(), saved).ok());
    EXPECT_TRUE(program->sync.backUpNow());
    const auto states = program->sync.replacedStates();
    ASSERT_EQ(states.size(), 1U);
    EXPECT_TRUE(program->sync.bringBack(states.front().name));
    program->scheduler.run();
    expectAllThere();
}

TEST_F(DamagedData, AnUnreadableTimelineComesFromTheBackup) {
    spoilWorkingCopies();
    restart();
    openVideo();
    EXPECT_EQ(*program->timeline.lines, marked);
    program->scheduler.advance(31);
    EXPECT_TRUE(program->sync.backUpNow());
    EXPECT_TRUE(notified(SafetyNotice::timelineFromBackup));
    EXPECT_EQ(decode<OrphanedTimeline>(*readFile(record()))->timelines, marked);
    restart();
    expectAllThere();
}

TEST_F(DamagedData, RecordsOfTimelinesStartedAgainAreKeptInOneStatePerBackup) {
    std::vector<std::string> videos{video};
    for (int i = 0; i < 6; ++i) {
        const fs::path file = machine.folder.path() / ("match " + std::to_string(i) + ".mp4");
        machine.bookmarks.add(file);
        videos.push_back(program->library.addVideoNamed(file, "Another")->videoData.id);
        program->storage.saveTimeline(marked, videos.back());
    }
    EXPECT_TRUE(program->sync.backUpNow());
    for (const auto& id : videos) {
        machine.defaults->setBoolean(layout::unreadableKey(id), true);
        program->storage.saveTimeline({TimelineLine{Uuid::random(), "Again", {}, ""}}, id);
    }
    EXPECT_TRUE(program->sync.backUpNow());
    const auto states = program->sync.replacedStates();
    ASSERT_EQ(states.size(), 1U);
    const fs::path kept = machine.documents() / layout::replacedFolder / states.front().name /
                          layout::timelinesFolder;
    for (const auto& id : videos)
        EXPECT_TRUE(fs::exists(kept / (id + layout::recordExtension)));
}

TEST_F(DamagedData, WithoutAnyReadableCopyNothingIsWrittenBeforeTheUserMarks) {
    spoilWorkingCopies();
    const Bytes saved = *readFile(record());
    fs::remove(record());
    restart();
    openVideo();
    program->scheduler.advance(31);
    EXPECT_TRUE(notified(SafetyNotice::timelineUnreadable));
    EXPECT_EQ(machine.defaults->data(layout::timelineKey(video)), toBytes("[{"));
    EXPECT_EQ(readFile(program->storage.timelineFile(video)).value(), toBytes("[{"));

    // The record was only temporarily unreadable, and the user has started again.
    program->timeline.addLine("Again");
    mark(1);
    ASSERT_TRUE(replaceFile(record(), saved).ok());
    restartAndBackUp();
    EXPECT_EQ(program->storage.loadTimeline(video).back()->name, "Again");
    const auto states = program->sync.replacedStates();
    ASSERT_EQ(states.size(), 1U) << "the better record is kept";
    EXPECT_TRUE(program->sync.bringBack(states.front().name));
    EXPECT_EQ(program->storage.loadTimeline(video), marked);
}

TEST_F(DamagedData, ADamagedCopyInTheBackupReplacesNothingOnRestore) {
    for (int i = 0; i < 12; ++i) {
        const Bytes goodRecord = *readFile(record());
        const fs::path tags = savedCollection() / layout::tagsFile;
        const Bytes goodTags = *readFile(tags);
        spoil(record(), std::string(goodRecord.begin(), goodRecord.begin() + 40));
        spoil(tags, std::string(goodTags.begin(), goodTags.end() - 2));
        EXPECT_TRUE(program->sync.restoreFromBackup());
        program->scheduler.run();
        machine.defaults->remove(layout::timelineKey(video));
        machine.defaults->remove(layout::collectionKey(hockey.id));
        expectAllThere();
        EXPECT_TRUE(program->sync.backUpNow());
        EXPECT_EQ(decode<OrphanedTimeline>(*readFile(record()))->timelines, marked);
        EXPECT_EQ(*readFile(tags), goodTags);
    }
}

TEST_F(DamagedData, ADamagedFileOfACollectionIsTakenFromTheBackupAndNeverCopiedThere) {
    CollectionData data = *program->storage.loadCollection(hockey.id);
    data.timeEvents.push_back({"event", "Overtime"});
    program->storage.saveCollection(data);
    EXPECT_TRUE(program->sync.backUpNow());
    const fs::path folder = program->storage.collectionsFolder() / hockey.id;
    for (const char* name : {layout::tagGroupsFile, layout::tagsFile, layout::labelGroupsFile,
                             layout::labelsFile, layout::timeEventsFile}) {
        SCOPED_TRACE(name);
        const Bytes good = *readFile(savedCollection() / name);
        spoil(folder / name);
        machine.defaults->remove(layout::collectionKey(hockey.id));
        restartAndBackUp();
        EXPECT_EQ(program->storage.loadCollection(hockey.id), data);
        EXPECT_EQ(*readFile(savedCollection() / name), good);
    }
}

TEST_F(DamagedData, AFlippedByteInTheIndexLosesNoCollection) {
    const Bytes good = *readFile(index());
    for (int i = 0; i < 25; ++i) {
        flip(index());
        restartAndBackUp();
        program->scheduler.advance(31);
        expectAllThere();
        EXPECT_EQ(*readFile(index()), good);
        EXPECT_TRUE(fs::exists(savedCollection() / layout::tagsFile));
    }
}

TEST_F(DamagedData, AFlippedIdInARestoredIndexLosesNoCollection) {
    std::string saved = fileText(machine.backup() / layout::collectionIndexFile);
    const auto id = saved.find(hockey.id);
    for (const std::size_t at : {std::size_t{0}, std::size_t{7}, std::size_t{30}}) {
        SCOPED_TRACE(at);
        std::string flippedId = saved;
        flippedId[id + at] = flippedId[id + at] == '1' ? '3' : '1';
        spoil(machine.backup() / layout::collectionIndexFile, flippedId);
        machine.loseDefaults();
        fs::remove_all(machine.documents());
        restartAndBackUp();
        program->storage.scheduleSaveToDisk();
        program->scheduler.advance(31);
        expectAllThere();
        EXPECT_TRUE(fs::exists(savedCollection() / layout::tagsFile));
    }
}

TEST_F(DamagedData, WorkingCopiesThatTheDefaultsLostAreReadFromTheDocuments) {
    machine.defaults->lose(layout::lastSyncDateKey);
    machine.defaults->lose(layout::videosDataKey);
    machine.defaults->lose(layout::collectionKey(hockey.id));
    openVideo();
    mark(500);
    const TimelineLines newest = *program->timeline.lines;
    program->scheduler.advance(31);
    machine.defaults->remove(layout::timelineKey(video));
    restartAndBackUp();
    EXPECT_TRUE(logged("✅ DataSync: Data is identical")) << "damage is not loss";
    EXPECT_EQ(machine.defaults->data(layout::timelineKey(video)), encode(newest).value());
    marked = newest;
    expectAllThere();
}

}  // namespace
}  // namespace tembrix
