#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/export_project.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

struct ScreenshotsRun : testing::Test, ExportRun {
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
    EXPECT_THAT(processes.calls()[0].arguments,
                ElementsAre("-j", (temporary / "screenshots.zip").string(),
                            (*drawings.place / "One.png").string(),
                            (*drawings.place / "Two.png").string()));
    EXPECT_TRUE(project.log.has("Screenshot not found: gone"));
    answerSave(saved / "pictures.zip");
    EXPECT_TRUE(endedWell());
    EXPECT_TRUE(
        project.log.has("Скриншоты успешно экспортированы: " + (saved / "pictures.zip").string()));
    EXPECT_TRUE(std::filesystem::exists(*drawings.place / "One.png"));
}

TEST_F(ScreenshotsRun, TellsWhatIsMissing) {
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
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text, testing::StartsWith("Ошибка сохранения скриншотов: "));

    services.drawings = nullptr;
    startScreenshots();
    EXPECT_TRUE(endedWith("Нет скриншотов для экспорта"));
}

}  // namespace
}  // namespace tembrix
