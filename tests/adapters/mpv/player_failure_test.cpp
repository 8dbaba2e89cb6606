#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <utility>
#include <vector>

#include "fakes/temp_folder.h"
#include "shown_player.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

std::string bytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class PlayerFailures : public testing::Test {
  protected:
    // Opens the file and returns the failure that the player reports, if any.
    std::optional<Error> failureOf(const fs::path& file) {
        shown.player = shown.factory.open(file);
        std::optional<Error> told;
        const auto watch = shown.player->observeFailure([&](const Error& error) { told = error; });
        shown.player->play();
        EXPECT_TRUE(QTest::qWaitFor([&] { return told.has_value(); }, 10000)) << file;
        return told;
    }

    TempFolder folder;
    ShownPlayer shown;
};

TEST_F(PlayerFailures, FilesThatAreNoVideoAreReportedAndDoNothing) {
    const auto none = folder.path() / "none.mp4";
    const auto empty = folder.write("empty.mp4", "");
    const auto text = folder.write("text.mp4", std::string(5000, 'x'));
    const auto whole = bytesOf(fixtureFile("mov"));
    const auto torn = folder.write("torn.mov", whole.substr(0, whole.size() / 2));
    for (const auto& file : {none, empty, text, torn, folder.path()}) {
        const auto error = failureOf(file);
        ASSERT_TRUE(error.has_value()) << file;
        EXPECT_FALSE(error->text.empty());
        auto& player = *shown.player;
        player.play();
        EXPECT_EQ(player.status(), PlayerStatus::paused) << file;
        EXPECT_EQ(player.rate(), 0);
        std::optional<bool> end;
        player.seek(1, [&](bool finished) { end = finished; });
        EXPECT_EQ(end, false);
        EXPECT_EQ(player.currentTime(), 0);
    }
}

TEST_F(PlayerFailures, SoundAloneIsNoVideo) {
    // The sound of a match video, as a wave file of one second.
    std::string wave(
        "RIFF\x24\xfa\0\0WAVEfmt \x10\0\0\0\1\0\1\0\0\x7d\0\0\0\xfa\0\0\2\0\x10\0data"
        "\0\xfa\0\0",
        44);
    wave.append(64000, '\0');
    const auto error = failureOf(folder.write("sound.wav", wave));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain, "player");
    EXPECT_EQ(error->code, static_cast<int>(PlayerFailure::noVideo));
}

TEST_F(PlayerFailures, PicturesThatCannotBeDecodedAreReported) {
    auto bytes = bytesOf(fixtureFile("30"));
    const auto name = bytes.rfind("avc1");
    ASSERT_NE(name, std::string::npos);
    bytes.replace(name, 4, "zzz1");
    const auto error = failureOf(folder.write("unknown.mp4", bytes));
    EXPECT_EQ(error->domain, "player") << error->text;
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(shown.player->status(), PlayerStatus::paused);
}

TEST_F(PlayerFailures, ATruncatedVideoPlaysToItsEnd) {
    const auto whole = bytesOf(fixtureFile("mkv"));
    const auto file = folder.write("torn.mkv", whole.substr(0, whole.size() / 2));
    shown.player = shown.factory.open(file);
    ASSERT_TRUE(shown.seek(1));
    EXPECT_EQ(shown.number(), variant("mkv").video.frameAt(1));
    shown.seek(11.5);  // beyond the readable part
    EXPECT_GT(shown.number(), 0);
    shown.player->play();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return shown.player->status() == PlayerStatus::paused; }, 10000));
    ASSERT_TRUE(shown.seek(2));
    EXPECT_EQ(shown.number(), variant("mkv").video.frameAt(2));
}

// Unmounts the folder while its files are open. If that is not permitted, the folder is renamed.
class Disk {
  public:
    explicit Disk(const fs::path& at) : at_(at) {
        fs::create_directories(at_);
        mounted_ = mount("none", at_.c_str(), "tmpfs", 0, nullptr) == 0;
    }
    ~Disk() { remove(); }
    void remove() {
        if (std::exchange(mounted_, false))
            umount2(at_.c_str(), MNT_DETACH);
        else if (fs::exists(at_))
            fs::rename(at_, at_.string() + "-removed");
    }

  private:
    fs::path at_;
    bool mounted_ = false;
};

TEST_F(PlayerFailures, ADiskRemovedDuringPlaybackIsReported) {
    Disk disk(folder.path() / "disk");
    const auto file = folder.path() / "disk" / "match.ts";
    fs::copy_file(fixtureFile("transport"), file);
    shown.player = shown.factory.open(file);
    ASSERT_TRUE(shown.seek(1));
    std::optional<Error> told;
    const auto watch = shown.player->observeFailure([&](const Error& error) { told = error; });
    shown.player->play();
    disk.remove();
    ASSERT_TRUE(QTest::qWaitFor([&] { return told.has_value(); }, 5000));
    EXPECT_EQ(told->code, static_cast<int>(PlayerFailure::vanished));
    EXPECT_EQ(shown.player->status(), PlayerStatus::playing);
}

TEST_F(PlayerFailures, AVideoCutOffWhileOpenPausesOnItsLastFrame) {
    const auto file = folder.write("match.avi", bytesOf(fixtureFile("avi")));
    shown.player = shown.factory.open(file);
    const auto& video = variant("avi").video;
    ASSERT_TRUE(shown.seek(1));
    std::vector<int> told;
    const auto watch =
        shown.player->observeFailure([&](const Error& error) { told.push_back(error.code); });
    fs::resize_file(file, fs::file_size(file) / 2);
    const auto pausesThere = [&] {
        const double time = shown.player->currentTime();
        EXPECT_GT(time, 4);
        EXPECT_LT(time, 9);
        EXPECT_EQ(shown.player->status(), PlayerStatus::paused);
        // The sound may be readable a little further than the video.
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return std::abs(shown.number() - video.frameAt(time)) <= 3; }, 1000))
            << shown.number() << " is shown at " << time;
    };
    shown.player->setRate(5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return told.size() == 1; }, 10000));
    EXPECT_EQ(told.back(), static_cast<int>(PlayerFailure::brokeOff));
    pausesThere();
    // Seeking beyond the readable part reports the failure again and shows the same frame. The part
    // before can still be played.
    shown.seek(11);
    EXPECT_TRUE(QTest::qWaitFor([&] { return told.size() == 2; }, 5000));
    pausesThere();
    ASSERT_TRUE(shown.seek(2));
    EXPECT_EQ(shown.number(), 60);
    shown.player->play();
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown.player->currentTime() > 2.3; }, 5000));
}

TEST_F(PlayerFailures, NothingIsPrintedToTheTerminal) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    failureOf(folder.write("text.mp4", std::string(5000, 'x')));
    const auto torn = bytesOf(fixtureFile("program")).substr(100, 300000);
    for (const auto& file : {folder.write("torn.mpg", torn), fixtureFile("30")}) {
        shown.player = shown.factory.open(file);
        shown.player->play();  // opens the sound device
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown.player->currentTime() > 0.5; }, 10000));
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(PlayerFailures, AFileDeletedWhileOpenIsReportedAndStillPlays) {
    const auto file = folder.write("match.mp4", bytesOf(fixtureFile("29.97")));
    shown.player = shown.factory.open(file);
    ASSERT_TRUE(shown.seek(1));
    std::optional<Error> told;
    const auto watch = shown.player->observeFailure([&](const Error& error) { told = error; });
    fs::remove(file);
    ASSERT_TRUE(QTest::qWaitFor([&] { return told.has_value(); }, 5000));
    EXPECT_EQ(told->code, static_cast<int>(PlayerFailure::vanished));
    const auto& video = variant("29.97").video;
    for (const double t : {7.0, 3.01, 11.0}) {
        ASSERT_TRUE(shown.seek(t));
        EXPECT_EQ(shown.number(), video.frameAt(t));
    }
    shown.player->play();
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown.player->currentTime() > 11.3; }, 5000));
}

}  // namespace
}  // namespace tembrix
