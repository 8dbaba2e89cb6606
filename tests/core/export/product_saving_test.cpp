#include "core/export/product_saving.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include "base/files.h"

#include "fakes/fake_panels.h"
#include "fakes/fake_texts.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;
using testing::StartsWith;

constexpr std::size_t productSize = 300000;

struct Saving : testing::Test {
    TempFolder folder;
    FakePanels panels;
    VirtualScheduler scheduler;
    FakeTexts texts;
    fs::path file = folder.write("run/film.mp4", std::string(productSize, 'f'));
    fs::path target = folder.write("place/mine.mp4", "an older film");
    std::unique_ptr<ProductSaving> saving =
        std::make_unique<ProductSaving>(panels, scheduler, texts);
    int ends = 0;
    std::optional<fs::path> saved;
    std::optional<Error> error;

    void begin() {
        saving->begin({copyOf(file, "gone"),
                       {"Save", "film.mp4", "mp4"},
                       [](const std::string& reason) { return "Not saved: " + reason; }},
                      [this](const Result<std::optional<fs::path>>& result) {
                          ++ends;
                          if (result)
                              saved = *result;
                          else
                              error = result.error();
                      });
    }
    void answer(std::optional<fs::path> place) {
        panels.answerSave(std::move(place));
        scheduler.run();
    }
    // Saving at this place fails: the reason is shown, and existing content is not changed.
    void expectFailure(const fs::path& place, const std::string& reason) {
        const auto before = fileText(place);
        answer(place);
        EXPECT_EQ(ends, 0);
        ASSERT_EQ(panels.alerts.size(), 1U) << reason;
        const auto message = panels.closeAlert();
        EXPECT_EQ(message.title, "exportNotSavedTitle");
        EXPECT_EQ(message.message, "Not saved: " + reason + "\n\nexportNotSavedHint");
        EXPECT_EQ(fileText(place), before);
        EXPECT_TRUE(fs::exists(file));
        ASSERT_EQ(panels.saves.size(), 1U) << "asks again";
        EXPECT_EQ(panels.saves[0].request.defaultName, place.filename());
    }
    void expectSaved() {
        answer(target);
        EXPECT_EQ(ends, 1);
        EXPECT_EQ(saved, target);
        EXPECT_EQ(fileText(target).size(), productSize);
        EXPECT_EQ(std::distance(fs::directory_iterator(target.parent_path()), {}), 1);
    }
};

TEST_F(Saving, AsksAgainAfterEachFailureUntilAPlaceWorks) {
    begin();
    expectFailure(folder.path() / "unplugged" / "film.mp4", "exportSaveFolderMissing");
    expectFailure(folder.path() / "place" / std::string(256, 'n'), "exportSaveNameRefused");
    // Limits the size of files, like FAT32.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{productSize / 2, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    expectFailure(target, "exportSaveTooLarge");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    expectSaved();
}

TEST_F(Saving, AFullDiskIsReportedAndAnotherPlaceAccepted) {
    const auto disk = folder.path() / "disk";
    fs::create_directories(disk);
    if (unshare(CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", disk.c_str(), "tmpfs", 0, "size=128k") != 0)
        GTEST_SKIP() << "no privilege to mount a small disk";
    begin();
    expectFailure(disk / "film.mp4", "exportSaveDiskFull");
    EXPECT_TRUE(fs::is_empty(disk));
    mount("none", disk.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr);
    expectFailure(disk / "film.mp4", "exportSaveNotWritable");
    expectSaved();
    umount(disk.c_str());
}

TEST_F(Saving, TheUserGivesUpByClosingThePanel) {
    begin();
    expectFailure(folder.path() / "unplugged" / "film.mp4", "exportSaveFolderMissing");
    answer(std::nullopt);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(saved);
    EXPECT_FALSE(error);
    EXPECT_TRUE(fs::exists(file));
}

TEST_F(Saving, AMissingProductIsAnError) {
    begin();
    fs::remove(file);
    answer(target);
    EXPECT_EQ(error, (Error{"product", 1, "gone"}));
    EXPECT_EQ(fileText(target), "an older film");
}

TEST_F(Saving, StoppingTheWritingAsksAgainAndLosesNothing) {
    begin();
    saving->stopWriting();  // only the panel is open
    panels.answerSave(target);
    saving->stopWriting();
    scheduler.run();
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(fileText(target), "an older film");
    ASSERT_EQ(panels.saves.size(), 1U);
    EXPECT_EQ(panels.saves[0].request.defaultName, "mine.mp4");
    EXPECT_TRUE(panels.alerts.empty());
    expectSaved();
}

TEST_F(Saving, ItMovesToAnotherWindowAtAnyStage) {
    begin();
    saving->moveTo("list");
    scheduler.run();
    panels.answerSave(std::nullopt);  // the panel closes with its window
    EXPECT_EQ(ends, 0);
    ASSERT_EQ(panels.saves.size(), 1U);
    EXPECT_EQ(panels.saves[0].request.window, "list");
    answer(folder.path() / "unplugged" / "film.mp4");
    saving->moveTo("other");
    panels.closeAlert();
    scheduler.run();
    ASSERT_EQ(panels.saves.size(), 1U);
    EXPECT_EQ(panels.saves[0].request.window, "other");
    panels.answerSave(target);
    saving->moveTo("list");  // it is being written
    scheduler.run();
    EXPECT_EQ(saved, target);
    EXPECT_TRUE(panels.saves.empty());

    saving = std::make_unique<ProductSaving>(panels, scheduler, texts);
    begin();
    saving.reset();
    answer(target);
    EXPECT_EQ(ends, 1);
}

TEST_F(Saving, ProductsNeedNotBeFiles) {
    saving->begin(
        {[](const fs::path& place, const Product::GoOn&) {
             const std::string text = "{}";
             return replaceFile(
                 place, BytesView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
         },
         {"Save", "marks.json", "json"},
         [](const std::string& reason) { return reason; }},
        [this](const Result<std::optional<fs::path>>&) { ++ends; });
    answer(target);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(fileText(target), "{}");
}

}  // namespace
}  // namespace tembrix
