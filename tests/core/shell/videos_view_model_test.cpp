#include "core/shell/videos_view_model.h"

#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

#include "base/file_url.h"
#include "base/files.h"

#include "core/storage/data_layout.h"
#include "fakes/core_project.h"

namespace tembrix {
namespace {

struct VideosViewModelTest : testing::Test {
    CoreProgram project;
    WindowsManager& windows = project.core.windows;
    VideosViewModel model{
        project.library,   project.core.previews, windows,        project.panels,
        project.scheduler, project.texts,         project.locale, [] { return "/guides/en.html"; }};

    std::vector<std::string> names(const std::string& search, VideoFilter filter) {
        std::vector<std::string> result;
        for (const auto& file : model.filteredFiles(search, filter))
            result.push_back(model.displayName(file));
        return result;
    }
};

TEST_F(VideosViewModelTest, AddingAVideoAsksForTheMatchAndNamesTheEntryByIt) {
    const auto video = project.folder.write("final.mp4", "bytes");
    model.send(videos::OpenFiles{});
    project.panels.answerOpen({video});
    ASSERT_TRUE(model.state->showMetadataSheet);
    EXPECT_EQ(model.state->videoMetadata.dateTime, project.scheduler.now());
    EXPECT_EQ(model.state->videoMetadata.urlString, fileUrl(video));

    model.send(videos::CancelMetadata{});
    EXPECT_FALSE(model.state->showMetadataSheet);
    EXPECT_TRUE(model.state->files.empty());

    project.media.add(video, 10);
    model.send(
        videos::SaveVideoMetadata{video, " Red Lions ", "Blue Foxes", "2-1", Date{1714588200}});
    project.scheduler.run();
    ASSERT_EQ(model.state->files.size(), 1U);
    EXPECT_TRUE(model.state->files.front().preview);
    EXPECT_FALSE(model.state->showMetadataSheet);
    EXPECT_EQ(model.displayName(model.state->files.front()),
              "Red_Lions_Blue_Foxes_2-1_2024-05-01_18-30");
    EXPECT_EQ(names("LIONS", VideoFilter::all).size(), 1U);
    EXPECT_TRUE(names("tigers", VideoFilter::all).empty());
    model.send(videos::OpenGuide{});
    EXPECT_EQ(project.panels.browsed, std::vector<std::string>{"file:///guides/en.html"});
}

TEST(Counts, TakeTheFormsOfTheLanguage) {
    FakeTexts texts;
    texts.set("en", "{0} tag|{0} tags");
    texts.set("ru", "{0} тег|{0} тега|{0} тегов");
    EXPECT_EQ(texts.counted("en", 1), "1 tag");
    EXPECT_EQ(texts.counted("en", 21), "21 tags");
    for (const auto& [number, form] : {std::pair(1, "тег"),
                                       {2, "тега"},
                                       {5, "тегов"},
                                       {11, "тегов"},
                                       {14, "тегов"},
                                       {21, "тег"},
                                       {22, "тега"},
                                       {112, "тегов"},
                                       {0, "тегов"}})
        EXPECT_EQ(texts.counted("ru", number), std::to_string(number) + " " + form);
}

TEST(MatchTitles, AreTheWordsOfANameMadeFromAMatch) {
    const VideoMetadata match{"Red Lions", "Blue Foxes", "2-1", Date{1714588200}, {}};
    const std::string name = "Red_Lions_Blue_Foxes_2-1_2024-05-01_18-30";
    EXPECT_EQ(matchTitle(name, match),
              (MatchTitle{"Red Lions – Blue Foxes, 2-1", Date{1714588200}}));
    EXPECT_EQ(matchTitle(name, std::nullopt).name, "Red Lions Blue Foxes 2-1");
    EXPECT_TRUE(matchTitle(name, std::nullopt).moment);
    // The match says nothing about a name that the user has given.
    EXPECT_EQ(matchTitle("Derby", match), (MatchTitle{"Derby", std::nullopt}));
    EXPECT_EQ(matchTitle("Second___2026-11-23_03-21", std::nullopt).name, "Second");
    EXPECT_EQ(matchTitle("___2026-11-23_03-21", std::nullopt).name, "");
    EXPECT_EQ(matchTitle("Cup_2026-11-23_0x-21", std::nullopt).name, "Cup_2026-11-23_0x-21");
}

TEST_F(VideosViewModelTest, RenamingClosesTheSheetAndIsStored) {
    const auto id = project.addVideo("match.mp4");
    const auto rename = [&](const VideosAction& action) {
        model.send(videos::ShowRenameSheet{model.state->files.front()});
        EXPECT_TRUE(model.state->showRenameSheet);
        model.send(action);
        EXPECT_FALSE(model.state->showRenameSheet);
        EXPECT_EQ(model.displayName(model.state->files.front()),
                  *project.library.reloadFiles().front().videoData.customName);
        return *project.library.findById(id)->customName;
    };
    EXPECT_EQ(rename(videos::RenameSimpleVideo{model.state->files.front(), "Derby"}), "Derby");
    EXPECT_EQ(model.state->newFileName, "match.mp4");
    EXPECT_EQ(rename(videos::CancelRename{}), "Derby");
    EXPECT_EQ(model.state->newFileName, "Derby");
    EXPECT_EQ(rename(videos::RenameVideo{model.state->files.front(), "A", "B", "1-0"}),
              "A_B_1-0_2024-05-01_12-00");
}

TEST_F(VideosViewModelTest, AnEmptyOrVanishedFileIsRefusedWithAText) {
    const auto empty = project.folder.write("empty.mp4", "");
    for (const auto& file : {empty, project.folder.path() / "gone.mp4"}) {
        model.send(videos::SaveVideoMetadata{file, "A", "B", "", project.scheduler.now()});
        EXPECT_TRUE(model.state->showError) << file;
        EXPECT_EQ(model.state->errorTitle, "alertsFileErrorTitle");
        model.send(videos::DismissError{});
        EXPECT_FALSE(model.state->showError);
    }
    EXPECT_TRUE(model.state->files.empty());
}

TEST_F(VideosViewModelTest, AMovedVideoAsksToBeBoundAgainAndThenOpensWithItsId) {
    const auto id = project.addVideo("old.mp4");
    std::filesystem::remove(project.folder.path() / "old.mp4");
    model.send(videos::OpenVideo{id});
    EXPECT_TRUE(windows.isClosing());
    ASSERT_TRUE(model.state->showRebindAlert);

    model.send(videos::PickRebindFile{});
    EXPECT_FALSE(model.state->showRebindAlert);
    project.panels.answerOpen({project.folder.path() / "nowhere.mp4"});
    EXPECT_EQ(model.state->errorTitle, "Не удалось перепривязать видео");

    const auto moved = project.folder.write("new place/old.mp4", "bytes");
    project.media.add(moved, 10);
    model.send(videos::RebindVideo{*model.state->fileToRebind, moved});
    EXPECT_FALSE(windows.isClosing());
    EXPECT_EQ(windows.currentVideoId(), id);
    EXPECT_EQ(project.players.opened.back(), moved);
    EXPECT_EQ(model.state->files.size(), 1U);
    EXPECT_FALSE(model.state->fileToRebind);
    project.scheduler.run();
    EXPECT_TRUE(model.state->files.front().preview);
}

TEST_F(VideosViewModelTest, AProjectOpensOnceTimelinesMayBeRead) {
    std::function<void()> open;
    model.setWhenReady([&](std::function<void()> task) { open = std::move(task); });
    model.send(videos::OpenVideo{project.addVideo()});
    EXPECT_TRUE(windows.isClosing());
    ASSERT_TRUE(open);
    open();
    EXPECT_FALSE(windows.isClosing());
}

TEST_F(VideosViewModelTest, AnotherFileUnderTheNameOfAVideoIsNotOpenedWithItsMarks) {
    const auto id = project.addVideo("recording.mp4");
    const auto file = project.folder.path() / "recording.mp4";
    project.bookmarks.rename(file, project.folder.path() / "archive" / "game1.mp4");
    project.bookmarks.add(file);
    model.send(videos::OpenVideo{id});
    EXPECT_TRUE(windows.isClosing());
    EXPECT_TRUE(model.state->showRebindAlert);
    EXPECT_FALSE(model.videoPath(model.state->files.front()));

    project.media.add(file, 10);
    model.send(videos::RebindVideo{model.state->files.front(), file});  // it is the right one
    EXPECT_EQ(windows.currentVideoId(), id);
    EXPECT_FALSE(windows.isClosing());
}

TEST_F(VideosViewModelTest, AVideoIsNotBoundToTheFileOfAnotherWhichIsNamed) {
    project.addVideo("first.mp4");
    project.addVideo("second.mp4");
    project.texts.set("videoIsOfAnotherEntry", "is {0}");
    const auto before = project.library.videosData();
    model.send(videos::RebindVideo{model.state->files.back(), project.folder.path() / "first.mp4"});
    EXPECT_EQ(model.state->errorTitle, "is first.mp4");
    EXPECT_TRUE(model.state->showError);
    EXPECT_TRUE(windows.isClosing());
    EXPECT_EQ(project.library.videosData(), before);
}

TEST_F(VideosViewModelTest, AVideoWhoseMarksCannotBeKeptIsNotDeleted) {
    const auto id = project.addVideo();
    const TimelineLines marks{TimelineLine{Uuid::random(), "Shots", {}, ""}};
    project.storage.saveTimeline(marks, id);
    const auto records = project.core.dataSync.backupTimelinesFolder();
    std::filesystem::remove_all(records);
    ASSERT_TRUE(replaceFile(records, toBytes("no folder")));
    model.send(videos::DeleteFile{model.state->files.front()});
    EXPECT_EQ(model.state->errorTitle, "videoNotDeleted");
    EXPECT_TRUE(model.state->showError);
    EXPECT_EQ(model.state->files.size(), 1U);
    EXPECT_EQ(project.storage.loadTimeline(id), marks);
}

TEST_F(VideosViewModelTest, EditsWaitForTheLaunchWorkWhichMayReplaceTheList) {
    project.addVideo("old.mp4");
    const Bytes saved = *project.defaults.data(layout::videosDataKey);
    std::vector<std::function<void()>> waiting;
    model.setWhenReady([&](std::function<void()> task) { waiting.push_back(std::move(task)); });
    const FilesFile old = model.state->files.front();
    model.send(videos::SaveVideoMetadata{project.folder.write("new.mp4", "bytes"), "Lions", "Foxes",
                                         "", project.scheduler.now()});
    model.send(videos::ToggleFavorite{old});
    model.send(videos::RenameSimpleVideo{old, "Derby"});
    EXPECT_FALSE(model.state->showMetadataSheet);

    project.defaults.setData(layout::videosDataKey, saved);  // as a restore does
    project.library.reloadFiles();
    for (const auto& task : waiting)
        task();
    EXPECT_EQ(names("", VideoFilter::favorites), std::vector<std::string>{"Derby"});
    EXPECT_EQ(names("Lions", VideoFilter::all).size(), 1U);
    model.send(videos::DeleteFile{model.state->files.front()});
    EXPECT_EQ(model.state->files.size(), 2U);
}

TEST_F(VideosViewModelTest, FiltersByFavoriteAndByLastAccess) {
    const auto a = project.addVideo("alpha.mp4");
    project.addVideo("beta.mp4");
    model.send(videos::ToggleFavorite{model.state->files.front()});
    EXPECT_EQ(names("", VideoFilter::favorites), std::vector<std::string>{"alpha.mp4"});
    EXPECT_TRUE(names("beta", VideoFilter::favorites).empty());

    // An entry whose file cannot be examined has the current time as its date, so it is first.
    std::filesystem::remove(project.folder.path() / "beta.mp4");
    project.scheduler.setWallClock(Date{4102444800});
    EXPECT_EQ(names("", VideoFilter::recent), (std::vector<std::string>{"beta.mp4", "alpha.mp4"}));
}

TEST_F(VideosViewModelTest, TheLastOpeningCountsWhereAccessTimesDoNotMove) {
    const auto opened = project.addVideo("opened.mp4");
    const auto read = project.addVideo("read.mp4");
    // Access times of 2020; the file that is not opened here has the later one.
    for (const auto& [name, seconds] :
         {std::pair("opened.mp4", 1577836800), {"read.mp4", 1577923200}}) {
        const timespec times[2]{{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (project.folder.path() / name).c_str(), times, 0), 0);
    }
    EXPECT_EQ(names("", VideoFilter::recent), (std::vector<std::string>{"read.mp4", "opened.mp4"}));
    project.scheduler.setWallClock(Date{1600000000});
    model.send(videos::OpenVideo{opened});
    EXPECT_EQ(names("", VideoFilter::recent), (std::vector<std::string>{"opened.mp4", "read.mp4"}));
    EXPECT_EQ(model.lastAccess(model.state->files.front()), Date{1600000000});
    model.send(videos::OpenVideo{read});  // refused while the other is open
    EXPECT_FALSE(project.library.lastOpening(read));
    windows.closeAll();
    model.send(videos::DeleteFile{model.state->files.front()});
    EXPECT_FALSE(project.library.lastOpening(opened));
    EXPECT_EQ(model.state->files.front().videoData.id, read);
}

}  // namespace
}  // namespace tembrix
