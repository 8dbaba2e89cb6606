#pragma once

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/files.h"
#include "base/uuid.h"

#include "core/collections/custom_collection_manager.h"
#include "core/storage/data_layout.h"
#include "two_stores_program.h"

namespace tembrix {

namespace fs = std::filesystem;

struct Season : testing::Test {
    Machine machine;
    std::unique_ptr<RunningProgram> program = std::make_unique<RunningProgram>(machine);
    std::string video;
    CollectionInfo hockey;
    TimelineLines marked;

    // A small amount of work in both stores and in the backup.
    void SetUp() override {
        const fs::path file = machine.folder.path() / "match.mp4";
        machine.bookmarks.add(file);
        video = program->library.addVideoNamed(file, "Final")->videoData.id;
        program->timeline.openTimeline(program->library.findById(video)->bookmark, {});
        program->timeline.addLine("Attack");
        for (int i = 0; i < 20; ++i)
            mark(i * 10.0);
        marked = *program->timeline.lines;
        CustomCollectionManager collection(program->collections);
        collection.setCollectionName("Hockey");
        hockey = program->save(collection, "Goal");
        program->scheduler.advance(31);
        ASSERT_TRUE(program->sync.backUpNow());
    }
    // Adds a stamp to the last line of the open video.
    void mark(double start) {
        TimelineStamp stamp;
        stamp.id = Uuid::random();
        stamp.idTag = "shot";
        stamp.timeStartSeconds = start;
        stamp.timeFinishSeconds = start + 5;
        program->timeline.appendStamp(program->timeline.lines->back()->id, stamp);
    }
    // Opens the video as a project does.
    void openVideo() {
        program->timeline.openTimeline(program->library.findById(video)->bookmark,
                                       program->storage.loadTimeline(video));
    }
    bool notified(SafetyNotice notice) const {
        const auto& notices = program->sync.notices();
        return std::find(notices.begin(), notices.end(), notice) != notices.end();
    }
    void restart() {
        program.reset();
        program = std::make_unique<RunningProgram>(machine);
    }
    // Starts the program again and runs the backup.
    void restartAndBackUp() {
        restart();
        program->scheduler.advance(3);
    }
    void expectAllThere() {
        ASSERT_EQ(program->library.videosData().size(), 1U);
        EXPECT_EQ(program->library.videosData().front().customName, "Final");
        EXPECT_EQ(program->storage.loadTimeline(video), marked);
        EXPECT_EQ(program->index.collections(), std::vector{hockey});
        const auto data = program->storage.loadCollection(hockey.id);
        ASSERT_TRUE(data);
        EXPECT_EQ(data->tags.front().name, "Goal");
    }
    bool logged(std::string_view line) { return program->log.kept.contains(line); }
    void spoil(const fs::path& file, std::string_view content = "{ not what it was") {
        ASSERT_TRUE(replaceFile(file, toBytes(content)).ok());
    }
    fs::path index() { return machine.documents() / layout::collectionIndexFile; }
    fs::path plist() { return machine.backup() / layout::defaultsBackupFile; }
};

}  // namespace tembrix
