#include "core/playback/video_player_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/captured_log.h"
#include "fakes/fake_player.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

class VideoPlayerManagerTest : public testing::Test {
  protected:
    FakePlayer& player() { return *players.player(); }
    void open() { manager.open("/videos/match.mp4"); }

    FakePlayerFactory players;
    CapturedLog log;
    VideoPlayerManager manager{players, log};
};

TEST_F(VideoPlayerManagerTest, DoesNothingWithoutAPlayer) {
    manager.seek(5);
    manager.seekBy(5);
    manager.togglePlayPause();
    manager.setPlaybackSpeed(2);
    manager.addTimeObserver();
    manager.play();
    manager.pause();
    manager.cleanup();
    EXPECT_EQ(manager.player(), nullptr);
    EXPECT_EQ(manager.playbackSpeed(), 1.0);
    EXPECT_EQ(manager.currentTime(), 0);
    EXPECT_EQ(manager.videoDuration(), 0);
    EXPECT_EQ(manager.currentVideoURL(), std::nullopt);
}

TEST_F(VideoPlayerManagerTest, APauseMeanwhileEndsWithTheLastOneUnlessSomebodyElseDecides) {
    const auto plays = [this] { return player().rate() > 0; };
    open();
    manager.setPlaybackSpeed(2);
    auto one = manager.pauseMeanwhile();
    auto another = manager.pauseMeanwhile();
    EXPECT_FALSE(plays());
    one.reset();
    EXPECT_FALSE(plays());
    another.reset();
    EXPECT_EQ(player().rate(), 2);

    one = manager.pauseMeanwhile();
    manager.togglePlayPause();
    EXPECT_TRUE(plays());
    manager.togglePlayPause();
    one.reset();
    EXPECT_FALSE(plays()) << "the user has paused it";

    manager.play();
    one = manager.pauseMeanwhile();
    manager.cleanup();
    open();
    player().pause();
    one.reset();
    EXPECT_FALSE(plays()) << "it was another video";

    // The sheet may be closed after the project.
    {
        VideoPlayerManager gone(players, log);
        gone.open("/videos/third.mp4");
        one = gone.pauseMeanwhile();
    }
    one.reset();
}

TEST_F(VideoPlayerManagerTest, OpeningPlaysAndPublishesTheTime) {
    std::vector<bool> told;
    const auto watch = manager.hasPlayer.observe([&](bool has) {
        told.push_back(has);
        EXPECT_EQ(manager.player() != nullptr, has);
    });
    players.duration = 90;
    open();
    EXPECT_EQ(*manager.status, PlayerStatus::playing);
    EXPECT_EQ(manager.videoDuration(), 90);
    EXPECT_EQ(manager.currentVideoURL(), std::filesystem::path("/videos/match.mp4"));

    std::vector<double> times;
    const auto watchTime =
        manager.currentTimeValue.observe([&](double seconds) { times.push_back(seconds); });
    player().advanceTo(0.35);
    ASSERT_EQ(times.size(), 3u);
    EXPECT_NEAR(times.back(), 0.3, 1e-9);

    manager.cleanup();
    EXPECT_THAT(told, ElementsAre(true, false));
}

TEST_F(VideoPlayerManagerTest, TheTimeDoesNotChangeDuringASeek) {
    open();
    player().advanceTo(20);
    manager.seek(5);
    EXPECT_EQ(player().timeObserverCount(), 0u);
    player().tick(20.1);
    player().advanceTo(20.2);
    EXPECT_NEAR(manager.currentTime(), 20, 1e-9);

    player().finishSeek();
    EXPECT_EQ(manager.currentTime(), 5);
    EXPECT_EQ(player().timeObserverCount(), 1u);
    player().advanceTo(5.1);
    EXPECT_NEAR(manager.currentTime(), 5.1, 1e-9);
}

TEST_F(VideoPlayerManagerTest, AnOvertakenSeekBringsNoLateTicks) {
    open();
    player().advanceTo(20);
    manager.seek(5);
    manager.seek(6);
    manager.seek(7);
    player().tick(20.3);
    EXPECT_NEAR(manager.currentTime(), 20, 1e-9);
    player().finishSeek();
    EXPECT_EQ(manager.currentTime(), 7);
    EXPECT_EQ(player().timeObserverCount(), 1u);
}

TEST_F(VideoPlayerManagerTest, AFailedSeekGivesThePlayersTime) {
    open();
    player().advanceTo(20);
    manager.seek(5);
    player().finishSeek(false);
    EXPECT_EQ(manager.currentTime(), 20);
    EXPECT_EQ(player().timeObserverCount(), 1u);
}

TEST_F(VideoPlayerManagerTest, SeeksOutsideTheVideoAreClampedByThePlayer) {
    open();
    manager.seek(-3);
    player().finishSeek();
    EXPECT_EQ(manager.currentTime(), 0);
    manager.seek(1000);
    player().finishSeek();
    EXPECT_EQ(manager.currentTime(), 60);
    EXPECT_THAT(player().seeks, ElementsAre(-3, 1000));
}

TEST_F(VideoPlayerManagerTest, TransportSeeksStartFromThePlayersOwnTime) {
    open();
    player().advanceTo(20.07);
    ASSERT_NEAR(manager.currentTime(), 20.0, 1e-9);
    manager.seekBy(-5);
    EXPECT_NEAR(player().seeks.back(), 15.07, 1e-9);
    manager.seekBy(10);
    EXPECT_NEAR(player().seeks.back(), 30.07, 1e-9);
}

TEST_F(VideoPlayerManagerTest, TheSpeedIsKeptThroughPauseAndPlay) {
    open();
    manager.togglePlayPause();
    EXPECT_EQ(player().rate(), 0);
    EXPECT_EQ(*manager.status, PlayerStatus::paused);

    manager.setPlaybackSpeed(2);
    EXPECT_EQ(player().rate(), 2);
    EXPECT_EQ(*manager.status, PlayerStatus::playing);
    int changes = 0;
    const auto watch = manager.status.observe([&](PlayerStatus) { ++changes; });
    manager.setPlaybackSpeed(5);
    EXPECT_EQ(changes, 0);
    manager.setPlaybackSpeed(2);
    manager.togglePlayPause();
    EXPECT_EQ(player().rate(), 0);
    manager.togglePlayPause();
    EXPECT_EQ(player().rate(), 2);

    manager.pause();
    manager.play();
    EXPECT_EQ(player().rate(), 2);
    player().setRate(1);  // from anywhere
    EXPECT_EQ(player().rate(), 2);
}

TEST_F(VideoPlayerManagerTest, ARateThatDiffersOnlyInDoublePrecisionIsLeftAlone) {
    open();
    manager.setPlaybackSpeed(0.1);
    player().rates.clear();
    player().setRate(static_cast<double>(0.1f));
    EXPECT_THAT(player().rates, ElementsAre(static_cast<double>(0.1f)));
}

TEST_F(VideoPlayerManagerTest, AWaitingPlayerStartsOnToggle) {
    open();
    player().setStatus(PlayerStatus::waiting);
    EXPECT_EQ(*manager.status, PlayerStatus::waiting);
    player().rates.clear();
    manager.togglePlayPause();
    EXPECT_THAT(player().rates, ElementsAre(1.0));
}

TEST_F(VideoPlayerManagerTest, CleanupEndsEverything) {
    open();
    manager.setPlaybackSpeed(5);
    player().advanceTo(20);
    manager.seek(5);
    double lastRate = -1;
    player().destroyed = [&, &rates = player().rates, destroyed = player().destroyed] {
        lastRate = rates.back();
        destroyed();
    };
    manager.cleanup();
    EXPECT_EQ(lastRate, 0) << "the sound must stop at once";
    EXPECT_EQ(players.player(), nullptr);
    EXPECT_EQ(manager.currentTime(), 0);
    EXPECT_EQ(manager.playbackSpeed(), 1.0);
    EXPECT_EQ(*manager.status, PlayerStatus::paused);
    EXPECT_FALSE(*manager.hasPlayer);

    open();
    EXPECT_EQ(player().rate(), 1);
    EXPECT_EQ(player().timeObserverCount(), 1u);
}

TEST_F(VideoPlayerManagerTest, OpeningAnotherVideoReplacesTheFirstDuringASeek) {
    open();
    manager.seek(5);
    manager.open("/videos/second.mp4");
    EXPECT_EQ(manager.currentVideoURL(), std::filesystem::path("/videos/second.mp4"));
    EXPECT_EQ(manager.currentTime(), 0);
    EXPECT_EQ(player().timeObserverCount(), 1u);
    player().advanceTo(0.2);
    EXPECT_NEAR(manager.currentTime(), 0.2, 1e-9);
}

TEST_F(VideoPlayerManagerTest, FailuresAreLoggedAndPassedOn) {
    std::vector<std::string> texts;
    const auto watch =
        manager.failed.observe([&](const Error& error) { texts.push_back(error.text); });
    open();
    player().fail({"player", 1, "The file holds no video."});
    EXPECT_THAT(texts, ElementsAre("The file holds no video."));
    EXPECT_THAT(log.lines(), testing::Contains(testing::HasSubstr("The file holds no video.")));
}

}  // namespace
}  // namespace tembrix
