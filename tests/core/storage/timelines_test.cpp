#include <algorithm>
#include <cmath>
#include <random>

#include "base/files.h"

#include "core/storage/data_layout.h"
#include "core/storage/storage_fixture.h"
#include "core/storage/storage_health.h"
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

TEST_F(Timelines, ADestroyedManagerWritesNothing) {
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
    scheduler.advance(30);  // the damaged copy must not replace the good file
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
    EXPECT_TRUE(log.contains("Error writing collection C"));
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

// Applies a random edit of the kinds that the program makes, sometimes a reordering.
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
        ASSERT_TRUE(encoder.encode(lines));
        ASSERT_EQ(asText(joined(encoder.pieces())), asText(encode(lines).value()));
        if (random() % 50 == 0) {
            TimelineLines broken = lines;
            broken.push_back(lineOf("no number", {stampAt(INFINITY)}));
            ASSERT_FALSE(encoder.encode(broken));
            ASSERT_EQ(asText(joined(encoder.pieces())), asText(encode(lines).value()));
        }
    }
}

// Stores compare pieces: unchanged pieces must be neither encoded nor written again.
TEST(TimelineEncoder, AnEditChangesFewPiecesAndAFreshEncoderCutsTheSame) {
    TimelineLines lines = {lineOf("One", {}), lineOf("Two", {})};
    for (auto& line : lines)
        for (int i = 0; i < 3000; ++i)
            line.write().stamps.push_back(stampAt(i));
    TimelineEncoder encoder;
    ASSERT_TRUE(encoder.encode(lines));
    const auto changed = [&](const auto& edit) {
        const ValuePieces before = encoder.pieces();
        edit(lines[0].write().stamps);
        EXPECT_TRUE(encoder.encode(lines));
        return std::count_if(
            encoder.pieces().begin(), encoder.pieces().end(), [&](const auto& piece) {
                return std::find(before.begin(), before.end(), piece) == before.end();
            });
    };
    EXPECT_LE(changed([](Stamps& stamps) { stamps.push_back(stampAt(9)); }), 2);
    EXPECT_LE(changed([](Stamps& stamps) { stamps.insert(stamps.begin(), stampAt(9)); }), 2);
    EXPECT_LE(changed([](Stamps& stamps) { stamps.erase(stamps.begin() + 1500); }), 2);
    EXPECT_LE(changed([](Stamps& stamps) { stamps[700].write().label = "Shot"; }), 2);
    TimelineEncoder fresh;
    ASSERT_TRUE(fresh.encode(lines));
    EXPECT_TRUE(std::equal(fresh.pieces().begin(), fresh.pieces().end(), encoder.pieces().begin(),
                           encoder.pieces().end(),
                           [](const auto& a, const auto& b) { return a->bytes == b->bytes; }));
}

TEST_F(Timelines, AFlushWritesOnlyWhatChangedAlsoAfterARestart) {
    storage->saveTimeline(lines(), "V");
    storage->saveCollection(collectionOf("C"));
    scheduler.advance(30);
    const auto tags = storage->collectionsFolder() / "C" / layout::tagsFile;
    folder.write("Documents/Tembrix-Stat/Timelines/V.json", "by hand");
    ASSERT_TRUE(replaceFile(tags, toBytes("by hand")));
    storage->saveTimeline(lines(), "W");
    storage->flushNow();
    EXPECT_TRUE(std::filesystem::exists(storage->timelineFile("W")));
    storage = makeStorage();
    storage->flushNow();
    EXPECT_EQ(fileText(storage->timelineFile("V")), "by hand");
    EXPECT_EQ(fileText(tags), "by hand");

    // What was removed is written again, except after all data was deleted.
    for (const bool deleted : {false, true}) {
        std::filesystem::remove_all(storage->timelinesFolder());
        std::filesystem::remove_all(storage->collectionsFolder());
        if (deleted)
            storage->keepFromDocuments();
        storage->flushNow();
        EXPECT_EQ(std::filesystem::exists(storage->timelineFile("V")), !deleted);
        EXPECT_EQ(std::filesystem::exists(tags), !deleted);
    }

    const auto newer = lines();
    storage->saveTimeline(newer, "V");
    storage->flushNow();
    EXPECT_EQ(fileText(storage->timelineFile("V")), asText(encode(newer).value()));
    storage->forgetWritten();
    std::filesystem::remove(storage->timelineFile("W"));
    storage->flushNow();
    EXPECT_TRUE(std::filesystem::exists(storage->timelineFile("W")));
}

TEST_F(Timelines, AWorkingCopyOlderThanItsDocumentGivesWayToItUnlessThatWasReplaced) {
    const auto early = lines();
    storage->saveTimeline(early, "V");
    const auto number = defaults.changeNumber(layout::timelineKey("V"));
    const auto late = lines();
    storage->saveTimeline(late, "V");
    scheduler.advance(30);

    // The end of the log was lost: the defaults have an earlier state.
    defaults.goBack(layout::timelineKey("V"), encode(early).value(), number);
    storage->flushNow();
    EXPECT_EQ(fileText(storage->timelineFile("V")), asText(encode(late).value()));
    storage = makeStorage();
    EXPECT_TRUE(log.contains("is older than its document"));
    EXPECT_EQ(storage->loadTimeline("V"), late);
    EXPECT_EQ(defaults.data(layout::damagedKey(layout::timelineKey("V"))), encode(early).value());

    // Later changes are newer than both.
    const auto marked = lines();
    storage->saveTimeline(marked, "V");
    storage->flushNow();
    storage = makeStorage();
    EXPECT_EQ(storage->loadTimeline("V"), marked);
    EXPECT_EQ(fileText(storage->timelineFile("V")), asText(encode(marked).value()));

    // A copy made by hand or by a restore is not the written document.
    defaults.goBack(layout::timelineKey("V"), encode(early).value(), number);
    folder.write("Documents/Tembrix-Stat/Timelines/V.json", "[]");
    storage = makeStorage();
    EXPECT_EQ(storage->loadTimeline("V"), early);

    // Numbers of another store are not comparable.
    scheduler.advance(30);
    MemoryUserDefaults other;
    other.setData(layout::timelineKey("V"), encode(early).value());
    InMemoryStorageManager another(other, scheduler, folder.directories(), log);
    EXPECT_EQ(another.loadTimeline("V"), early);
}

TEST_F(Timelines, AFlippedBitInTheListOfWrittenValuesDropsNothing) {
    const std::string key = layout::timelineKey("V");
    storage->saveTimeline(lines(), "V");
    storage->flushNow();
    const auto marked = lines();
    storage->saveTimeline(marked, "V");
    const auto number = defaults.changeNumber(key);
    const auto list = folder.path() / "Documents/Tembrix-Stat" / layout::writtenValuesFile;
    const std::string sound = fileText(list);
    for (std::size_t at = 0; at < 4 * sound.size(); ++at) {
        std::string flipped = sound;
        flipped[at / 4] = static_cast<char>(flipped[at / 4] ^ (1 << at % 4));
        folder.write("Documents/Tembrix-Stat/WrittenValues.txt", flipped);
        storage = makeStorage();
        ASSERT_EQ(storage->loadTimeline("V"), marked) << flipped;
        ASSERT_EQ(defaults.changeNumber(key), number);
    }
    storage->flushNow();
    EXPECT_EQ(fileText(storage->timelineFile("V")), asText(encode(marked).value()));
}

// The database does not notice one flipped bit in a small value.
TEST_F(Timelines, AWrittenWorkingCopyThatChangedByItselfIsNotTrusted) {
    const std::string key = layout::timelineKey("V");
    auto right = lines();
    storage->saveTimeline(right, "V");
    storage->flushNow();
    const auto number = defaults.changeNumber(key);
    auto wrong = right;
    wrong[0].write().stamps[0].write().timeFinishSeconds += 1;
    defaults.goBack(key, encode(wrong).value(), number);
    storage = makeStorage();
    EXPECT_EQ(storage->loadTimeline("V"), right);
    EXPECT_EQ(defaults.data(layout::damagedKey(key)), encode(wrong).value());

    // Without the document as it was written, nobody can tell. Both are kept.
    defaults.goBack(key, encode(wrong).value(), number);
    const std::string other = R"([ ])";
    folder.write("Documents/Tembrix-Stat/Timelines/V.json", other);
    storage = makeStorage();
    EXPECT_EQ(storage->loadTimeline("V"), wrong);
    EXPECT_EQ(defaults.data(layout::damagedKey(key) + "_2"), toBytes(other));
    EXPECT_TRUE(log.contains("differs from what was written"));
}

TEST_F(Timelines, WhatTheDefaultsRefuseStillReachesTheDocumentsAndIsReported) {
    StorageHealth health(defaults, scheduler);
    defaults.refuse("disk full");
    const auto kept = lines();
    storage->saveTimeline(kept, "V");
    EXPECT_TRUE(health.status().allStored);  // not while it is being saved
    scheduler.run();
    EXPECT_FALSE(health.status().allStored);
    EXPECT_EQ(health.status().reason, "disk full");
    scheduler.advance(30);
    EXPECT_EQ(fileText(storage->timelineFile("V")), asText(encode(kept).value()));
    defaults.loseRefused();
    storage = makeStorage();
    EXPECT_EQ(storage->loadTimeline("V"), kept);

    defaults.refuse("disk full");
    storage->saveTimeline({}, "V");
    defaults.refuse("");
    storage->saveTimeline(kept, "V");
    scheduler.run();
    EXPECT_TRUE(health.status().allStored);
}

}  // namespace
}  // namespace tembrix
