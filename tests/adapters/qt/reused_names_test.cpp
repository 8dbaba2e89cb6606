#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"

#include "adapters/qt/file_bookmarks.h"
#include "core/records/codec.h"
#include "core/storage/video_files_manager.h"
#include "core/storage/video_list_store.h"
#include "fakes/captured_log.h"
#include "fakes/fake_texts.h"
#include "fakes/memory_user_defaults.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

struct Rescued final : DeletedTimelineKeeper {
    Result<void> saveTimelineBeforeDeletion(const VideosData& video,
                                            const TimelineLines& lines) override {
        timelines.emplace_back(video.id, lines);
        return {};
    }
    std::vector<std::pair<std::string, TimelineLines>> timelines;
};

// The library with real files from a recorder that gives every match the same name, on a file
// system that numbers files and on one that does not.
struct ReusedNames : testing::TestWithParam<bool> {
    TempFolder folder;
    MemoryUserDefaults defaults;
    VirtualScheduler scheduler;
    CapturedLog log;
    FakeTexts texts;
    FileBookmarks bookmarks =
        GetParam() ? FileBookmarks() : FileBookmarks([](const fs::path&) { return std::nullopt; });
    Rescued rescued;
    InMemoryStorageManager storage{defaults, scheduler, folder.directories(), log};
    std::unique_ptr<VideoFilesManager> library = launched();

    std::unique_ptr<VideoFilesManager> launched() {
        auto started = std::make_unique<VideoFilesManager>(storage, bookmarks, folder.directories(),
                                                           texts, log);
        started->setDeletedTimelineKeeper(&rescued);
        started->start();
        return started;
    }
    fs::path at(const std::string& name) const { return folder.path() / name; }
    int recordings = 0;
    std::string record(const std::string& name) {
        const auto file = folder.write(name, "film " + std::to_string(++recordings));
        return library->addVideo(file)->videoData.id;
    }
    std::optional<fs::path> fileOf(const std::string& id) const {
        const VideosData* video = library->findById(id);
        return video ? library->resolveVideoURL(video->bookmark) : std::nullopt;
    }
};
INSTANTIATE_TEST_SUITE_P(FileSystems, ReusedNames, testing::Bool());

// Entries of earlier versions, whose bookmarks do not contain the content.
TEST_P(ReusedNames, ARecordingWrittenOverTheFileOfAnOldEntryIsAnotherVideo) {
    const auto id = record("recording.mp4");
    auto list = library->videosData();
    std::string old(asText(list.front().bookmark));
    const auto identityEnd = old.find(' ', old.find(' ', 5) + 1);
    old = "TSB1 " + old.substr(5, identityEnd - 5) + old.substr(old.find('\n'));
    list.front().bookmark = toBytes(old);
    storeVideoList(defaults, encode(list).value());
    library = launched();
    ASSERT_EQ(fileOf(id), at("recording.mp4"));
    std::ofstream(at("recording.mp4"), std::ios::trunc) << "another match";
    EXPECT_EQ(fileOf(id), std::nullopt) << "opened under the marks of another match";
    EXPECT_NE(library->addVideo(at("recording.mp4"))->videoData.id, id);
    library = launched();
    EXPECT_EQ(library->videosData().size(), 2U);
}

TEST_P(ReusedNames, ANewRecordingUnderAnOldNameIsAnotherVideo) {
    const auto first = record("recording.mp4");
    fs::rename(at("recording.mp4"), at("game1.mp4"));
    const auto second = record("recording.mp4");
    for (int launches = 0; launches < 2; ++launches, library = launched()) {
        ASSERT_NE(first, second);
        EXPECT_EQ(fileOf(first), at("game1.mp4"));
        EXPECT_EQ(fileOf(second), at("recording.mp4"));
    }
    // The renamed file is still the first video, even if the user adds it again.
    EXPECT_EQ(library->addVideo(at("game1.mp4"))->videoData.id, first);
    EXPECT_EQ(library->files().size(), 2u);
}

TEST_P(ReusedNames, ALaunchFollowsNamesThatWereRotated) {
    std::map<std::string, std::string> ids;
    for (const std::string name : {"1.mp4", "2.mp4", "3.mp4"})
        ids[name] = record(name);
    fs::rename(at("3.mp4"), at("x.mp4"));
    fs::rename(at("2.mp4"), at("3.mp4"));
    fs::rename(at("1.mp4"), at("2.mp4"));
    fs::rename(at("x.mp4"), at("1.mp4"));
    library = launched();
    EXPECT_EQ(fileOf(ids["1.mp4"]), at("2.mp4"));
    EXPECT_EQ(fileOf(ids["2.mp4"]), at("3.mp4"));
    EXPECT_EQ(fileOf(ids["3.mp4"]), at("1.mp4"));
}

TEST_P(ReusedNames, AVideoThatWasMovedAwayDoesNotTakeTheFileOfAnother) {
    const auto first = record("recording.mp4");
    fs::create_directory(at("archive"));
    fs::rename(at("recording.mp4"), at("archive/game1.mp4"));
    EXPECT_FALSE(fileOf(first));
    folder.write("recording.mp4", "another");
    EXPECT_FALSE(fileOf(first)) << "also while no other video has the file";
    const auto second = record("recording.mp4");
    for (int launches = 0; launches < 2; ++launches, library = launched()) {
        EXPECT_NE(first, second);
        EXPECT_FALSE(fileOf(first));
        EXPECT_EQ(fileOf(second), at("recording.mp4"));
    }
    EXPECT_TRUE(library->rebindVideo(first, at("archive/game1.mp4")));
    EXPECT_EQ(fileOf(first), at("archive/game1.mp4"));
}

TEST_P(ReusedNames, ARecordingOverAnOldOneIsAnotherVideoAndOneThatGrowsIsNot) {
    const auto first = record("recording.mp4");
    std::ofstream(at("recording.mp4"), std::ios::app) << " goes on";
    EXPECT_EQ(library->addVideo(at("recording.mp4"))->videoData.id, first);
    const auto second = record("recording.mp4");
    for (int launches = 0; launches < 2; ++launches, library = launched()) {
        EXPECT_NE(first, second);
        EXPECT_FALSE(fileOf(first));
        EXPECT_EQ(fileOf(second), at("recording.mp4"));
    }
}

TEST_P(ReusedNames, EqualCopiesAreVideosOfTheirOwnAlsoWhenOneIsDeleted) {
    const auto first = record("one.mp4");
    fs::copy_file(at("one.mp4"), at("two.mp4"));
    const auto second = library->addVideo(at("two.mp4"))->videoData.id;
    fs::remove(at("one.mp4"));
    library = launched();
    EXPECT_NE(first, second);
    EXPECT_TRUE(library->findById(first));
    EXPECT_EQ(fileOf(second), at("two.mp4"));
}

TEST_P(ReusedNames, ADuplicateThatALaunchDropsLeavesItsMarks) {
    const auto first = record("match.mp4");
    const VideosData twin{*bookmarks.make(at("match.mp4")), "TWIN", {}, false};
    const TimelineLines marks{TimelineLine{Uuid::random(), "Shots", {}, ""}};
    storage.saveTimeline(marks, twin.id);
    auto list = library->videosData();
    list.push_back(twin);
    defaults.setData("videosData", encode(list).value());
    library = launched();
    ASSERT_EQ(library->files().size(), 1u);
    EXPECT_EQ(library->files()[0].videoData.id, first);
    EXPECT_EQ(rescued.timelines, (decltype(rescued.timelines){{twin.id, marks}}));
}

}  // namespace
}  // namespace tembrix
