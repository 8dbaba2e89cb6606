#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/export_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

struct ScreenshotsRun : testing::Test, RunningExport {
    void startScreenshots() { start(cuts::Screenshots{}); }
};

TEST_F(ScreenshotsRun, PacksThePicturesThatAreThere) {
    project.player.cleanup();  // needs no video in the player
    drawings.list = {{"One", 1, 3, {}}, {"gone", 2, 3, {}}, {"Two.png", 3, 3, {}}};
    drawings.place = project.folder.path() / "drawings";
    project.folder.write("drawings/One.png", "1");
    project.folder.write("drawings/Two.png", "2");
    startScreenshots();
    ASSERT_EQ(processes.calls().size(), 1U);
    const auto arguments = processes.calls()[0].arguments;
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_TRUE(arguments[1].ends_with("/screenshots.zip"));
    EXPECT_EQ(arguments[2], *drawings.place / "One.png");
    EXPECT_EQ(arguments[3], *drawings.place / "Two.png");
    EXPECT_TRUE(project.log.has("Screenshot not found: gone"));
    answerSave(saved / "pictures.zip");
    EXPECT_TRUE(endedWell());
    EXPECT_TRUE(
        project.log.has("Скриншоты успешно экспортированы: " + (saved / "pictures.zip").string()));
    EXPECT_TRUE(std::filesystem::exists(*drawings.place / "One.png"));
}

TEST_F(ScreenshotsRun, NamesInTheArchiveAreGoodForEveryFileSystem) {
    drawings.list = {{"Goal", 1, 3, {}}, {"GOAL", 2, 3, {}}, {"Why?", 3, 3, {}}};
    drawings.place = project.folder.path() / "drawings";
    for (const char* name : {"Goal", "GOAL", "Why?"})
        project.folder.write("drawings/" + std::string(name) + ".png", name);
    std::vector<std::string> packed;
    processes.behavior = [&](const FakeProcessRunner::Call& call) {
        for (std::size_t i = 2; i < call.arguments.size(); ++i)
            packed.push_back(std::filesystem::path(call.arguments[i]).filename().string() + " " +
                             fileText(call.arguments[i]));
        std::ofstream(call.arguments[1]) << "archive";
        return Result<ProcessOutcome>(ProcessOutcome{});
    };
    startScreenshots();
    EXPECT_THAT(packed, ElementsAre("Goal.png Goal", "GOAL_2.png GOAL", "Why-.png Why?"));
    answerSave(saved / "pictures.zip");
    EXPECT_TRUE(endedWell());
    EXPECT_EQ(fileText(*drawings.place / "Why?.png"), "Why?") << "the pictures themselves stay";
}

TEST_F(ScreenshotsRun, ReportsWhatIsMissing) {
    startScreenshots();
    EXPECT_TRUE(endedWith("Нет скриншотов для экспорта"));
    drawings.list = {{"One", 1, 3, {}}};
    startScreenshots();
    EXPECT_TRUE(endedWith("Не найдены файлы проекта"));
    drawings.place = project.folder.path();
    startScreenshots();
    EXPECT_TRUE(endedWith("Не найдены файлы скриншотов"));

    project.folder.write("One.png", "1");
    processes.behavior = [](const FakeProcessRunner::Call&) {
        return Result<ProcessOutcome>(ProcessOutcome{12, "nothing to do"});
    };
    startScreenshots();
    EXPECT_TRUE(endedWith("nothing to do"));
    processes.behavior = [](const FakeProcessRunner::Call& call) {
        std::ofstream(call.arguments[1]) << "archive";
        return Result<ProcessOutcome>(ProcessOutcome{});
    };
    startScreenshots();
    answerSave(saved / "gone" / "pictures.zip");
    EXPECT_THAT(closeAlert(), testing::StartsWith("Ошибка сохранения скриншотов: "));
    answerSave(std::nullopt);
    EXPECT_TRUE(endedWell());

    services.drawings = nullptr;
    startScreenshots();
    EXPECT_TRUE(endedWith("Нет скриншотов для экспорта"));
}

}  // namespace
}  // namespace tembrix
