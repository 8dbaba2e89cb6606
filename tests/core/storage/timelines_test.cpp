#include <algorithm>
#include <cmath>
#include <random>

#include "base/files.h"

#include "core/storage/data_layout.h"
#include "core/storage/storage_fixture.h"
#include "core/storage/timeline_encoder.h"

namespace tembrix {
namespace {

using Timelines = StorageTest;

TEST_F(Timelines, AChangeIsStoredAtOnceAndOnDiskThirtySecondsAfterTheFirst) {
    TimelineLines now = lines();
    for (int i = 0; i < 10; ++i) {
        now[0].write().stamps.push_back(stampAt(i));
        storage->saveTimeline(now, "V");
        EXPECT_EQ(defaults.data(layout::timelineKey("V")), encode(now).value());
        scheduler.advance(2);
    }
    EXPECT_EQ(scheduler.pendingTimers(), 1u);
    scheduler.advance(9.9);
    EXPECT_FALSE(std::filesystem::exists(storage->timelineFile("V")));
    scheduler.advance(0.1);
    EXPECT_EQ(fileText(storage->timelineFile("V")), asText(encode(now).value()));
    EXPECT_EQ(scheduler.pendingTimers(), 0u);
    scheduler.advance(1);
    storage->saveTimeline({}, "V");
    EXPECT_EQ(scheduler.pendingTimers(), 1u);
    scheduler.advance(30);
    EXPECT_EQ(fileText(storage->timelineFile("V")), "[]");
}

TEST_F(Timelines, TerminationFlushesAWaitingChangeAndSavesTheIndex) {
    storage->setCollectionIndex(&index);
    storage->saveTimeline(lines(), "V");
    storage->applicationWillTerminate();
    EXPECT_EQ(scheduler.pendingTimers(), 0u);
    EXPECT_EQ(index.saves, 1);
    scheduler.run();
    EXPECT_TRUE(std::filesystem::exists(storage->timelineFile("V")));
    storage->applicationWillTerminate();
    EXPECT_EQ(scheduler.pendingTasks(), 0u);
    EXPECT_EQ(index.saves, 2);
}

TEST_F(Timelines, AManagerThatIsGoneWritesNothing) {
    storage->saveTimeline(lines(), "V");
    storage->applicationWillTerminate();
    const auto file = storage->timelineFile("V");
    storage.reset();
    scheduler.run();
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(Timelines, TheFileHealsALostOrDamagedWorkingCopyWithoutArmingAFlush) {
    const TimelineLines kept = lines();
    storage->saveTimeline(kept, "V");
    scheduler.advance(30);
    defaults.remove(layout::timelineKey("V"));
    EXPECT_EQ(storage->loadTimeline("V"), kept);
    EXPECT_EQ(defaults.data(layout::timelineKey("V")), encode(kept).value());
    EXPECT_EQ(scheduler.pendingTimers(), 0u);

    defaults.setData(layout::timelineKey("V"), toBytes("[{\"id\""));
    storage->saveTimeline(lines(), "Other");
    scheduler.advance(30);  // the damaged copy must not go over the good file
    EXPECT_TRUE(log.contains("Unreadable timeline V not written"));
    EXPECT_EQ(storage->loadTimeline("V"), kept);
    EXPECT_EQ(defaults.data(layout::damagedKey(layout::timelineKey("V"))), toBytes("[{\"id\""));
}

TEST_F(Timelines, WhatCannotBeReadAnywhereIsEmptyAndSetAside) {
    EXPECT_TRUE(storage->loadTimeline("V").empty());
    EXPECT_TRUE(log.lines().empty());
    defaults.setText(layout::timelineKey("V"), "a value of another kind");
    folder.write("Documents/Tembrix-Stat/Timelines/V.json", "[{}]");
    EXPECT_TRUE(storage->loadTimeline("V").empty());
    EXPECT_EQ(defaults.data(layout::damagedKey(layout::timelineKey("V"))), toBytes("[{}]"));
    for (const auto* damage : {"[", "[", "]"}) {
        defaults.setData(layout::timelineKey("V"), toBytes(damage));
        EXPECT_TRUE(storage->loadTimeline("V").empty());
    }
    EXPECT_EQ(defaults.keys(layout::damagedPrefix).size(),
              3u);  // each of them once, none overwritten
    EXPECT_TRUE(storage->loadTimeline("../../../secret").empty());
}

TEST_F(Timelines, AFailedEncodingKeepsTheLastGoodCopy) {
    TimelineLines now = lines();
    storage->saveTimeline(now, "V");
    const auto before = defaults.data(layout::timelineKey("V"));
    now[0].write().stamps[0].write().timeStartSeconds = std::nan("");
    storage->saveTimeline(now, "V");
    EXPECT_EQ(defaults.data(layout::timelineKey("V")), before);
    now[0].write().stamps[0].write().timeStartSeconds = 2;
    storage->saveTimeline(now, "V");
    EXPECT_EQ(defaults.data(layout::timelineKey("V")), encode(now).value());
}

TEST_F(Timelines, DocumentsThatCannotBeWrittenCostALogLineAndNothingElse) {
    folder.write("Documents", "a file where the folder should be");
    storage->saveTimeline(lines(), "V");
    storage->saveCollection(collectionOf("C"));
    scheduler.advance(30);
    EXPECT_TRUE(log.contains("Error making the timelines folder"));
    EXPECT_TRUE(log.contains("Error making the collection folder"));
    EXPECT_EQ(storage->loadTimeline("V").size(), 2u);
    std::filesystem::remove(folder.path() / "Documents");
    storage->scheduleSaveToDisk();
    scheduler.advance(30);
    EXPECT_TRUE(std::filesystem::exists(storage->timelineFile("V")));
}

TEST_F(Timelines, OneFileInTheWayDoesNotStopTheOthersAndDeletingIsQuiet) {
    std::filesystem::create_directories(storage->timelineFile("A") / "full");
    storage->saveTimeline(lines(), "A");
    storage->saveTimeline(lines(), "B");
    scheduler.advance(30);
    EXPECT_TRUE(log.contains("Error writing timeline A"));
    EXPECT_TRUE(std::filesystem::is_regular_file(storage->timelineFile("B")));
    storage->deleteTimelineFile("B");
    storage->deleteTimelineFile("B");
    EXPECT_FALSE(std::filesystem::exists(storage->timelineFile("B")));
}

// Applies one random edit of the kinds that the program makes, a rare reordering included.
void edit(TimelineLines& lines, std::mt19937& random) {
    const auto below = [&](std::size_t count) { return random() % count; };
    if (lines.empty() || below(10) == 0) {
        lines.insert(lines.begin() + static_cast<long>(below(lines.size() + 1)),
                     lineOf("line " + std::to_string(below(100)), {}));
        return;
    }
    if (below(15) == 0) {
        lines.erase(lines.begin() + static_cast<long>(below(lines.size())));
        return;
    }
    if (below(15) == 0)
        std::swap(lines.front(), lines.back());
    auto& stamps = lines[below(lines.size())].write().stamps;
    const auto at = static_cast<long>(below(stamps.size() + 1));
    switch (below(5)) {
        case 0:
        case 1:
            stamps.push_back(stampAt(static_cast<double>(below(9000)) / 7));
            break;
        case 2:
            if (at < std::ssize(stamps))
                stamps.erase(stamps.begin() + at);
            break;
        case 3:
            if (at < std::ssize(stamps))
                stamps[static_cast<std::size_t>(at)].write().label += "ё\"";
            break;
        default:
            std::shuffle(stamps.begin(), stamps.end(), random);
    }
}

TEST(TimelineEncoder, WritesWhatThePlainCodecWritesAfterAnyEdits) {
    std::mt19937 random(11);
    TimelineEncoder encoder;
    TimelineLines lines;
    std::vector<TimelineLines> history;
    for (int i = 0; i < 3000; ++i) {
        if (!history.empty() && random() % 20 == 0)
            lines = history[random() % history.size()];  // undo, or another project
        else
            edit(lines, random);
        if (i % 10 == 0)
            history.push_back(lines);
        ASSERT_EQ(asText(encoder.encode(lines).value()), asText(encode(lines).value()));
        if (random() % 50 == 0) {
            TimelineLines broken = lines;
            broken.push_back(lineOf("no number", {stampAt(INFINITY)}));
            ASSERT_FALSE(encoder.encode(broken));
        }
    }
}

}  // namespace
}  // namespace tembrix
