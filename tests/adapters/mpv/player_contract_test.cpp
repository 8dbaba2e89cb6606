#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <vector>

#include "fakes/fake_player.h"
#include "fakes/temp_folder.h"
#include "shown_player.h"

namespace tembrix {
namespace {

// A player that is paused at the start of a video of 12 seconds with 30 frames per second, and a
// function that lets time pass until a condition is true.
struct Subject {
    virtual ~Subject() = default;
    virtual Player& player() = 0;
    virtual void close() = 0;
    // Makes the file unreadable beyond its middle.
    virtual void cutOff() = 0;
    virtual void removeFile() = 0;
    // Opens a file that is not a video.
    virtual void openText() = 0;
    virtual bool passUntil(const std::function<bool()>& holds) = 0;
};

struct FakeSubject final : Subject {
    FakePlayerFactory factory;
    std::unique_ptr<Player> open;

    FakeSubject() {
        factory.duration = 12;
        open = factory.open("/match.mp4");
    }
    Player& player() override { return *open; }
    void close() override { open.reset(); }
    void cutOff() override { factory.player()->breakOffAt(6); }
    void removeFile() override { factory.player()->vanish(); }
    void openText() override {
        factory.failure = Error{"media", 2, "no video"};
        open = factory.open("/text.mp4");
    }
    bool passUntil(const std::function<bool()>& holds) override {
        for (int i = 0; i < 200 && !holds() && open; ++i) {
            factory.player()->reportFailure();
            if (!open || holds())
                break;
            if (factory.player()->isSeeking())
                factory.player()->finishSeek();
            else if (open->status() == PlayerStatus::playing)
                factory.player()->advanceBy(0.1 * open->rate());
        }
        return holds();
    }
};

struct MpvSubject final : Subject {
    TempFolder folder;
    std::filesystem::path file = folder.path() / "match.avi";
    ShownPlayer shown;

    MpvSubject() {
        std::filesystem::copy_file(fixtureFile("avi"), file);
        shown.player = shown.factory.open(file);
    }
    Player& player() override { return *shown.player; }
    void close() override { shown.player.reset(); }
    void cutOff() override {
        std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    }
    void removeFile() override { std::filesystem::remove(file); }
    void openText() override {
        shown.player = shown.factory.open(folder.write("text.mp4", "No video."));
    }
    bool passUntil(const std::function<bool()>& holds) override {
        return QTest::qWaitFor(holds, 10000);
    }
};

template <class Kind>
std::unique_ptr<Subject> make() {
    return std::make_unique<Kind>();
}

class PlayerContract : public testing::TestWithParam<std::unique_ptr<Subject> (*)()> {
  protected:
    bool passUntil(const std::function<bool()>& holds) { return subject->passUntil(holds); }
    bool seek(double seconds) {
        int calls = 0;
        bool result = false;
        player.seek(seconds, [&](bool finished) {
            ++calls;
            result = finished;
        });
        EXPECT_TRUE(passUntil([&] { return calls > 0; }));
        EXPECT_EQ(calls, 1);
        return result;
    }

    std::unique_ptr<Subject> subject = GetParam()();
    Player& player = subject->player();
    std::vector<int> failures;  // the reported codes
    Subscription watchFailures =
        player.observeFailure([this](const Error& error) { failures.push_back(error.code); });
};

TEST_P(PlayerContract, OpensAtRestWithItsLengthKnown) {
    EXPECT_NEAR(player.duration(), 12, 0.02);
    EXPECT_EQ(player.currentTime(), 0);
    EXPECT_EQ(player.rate(), 0);
    EXPECT_EQ(player.status(), PlayerStatus::paused);
}

TEST_P(PlayerContract, ReportsTheStatusAtOnceAndAtEachChange) {
    std::vector<std::pair<PlayerStatus, double>> told;
    const auto watch = player.observeStatus(
        [&](PlayerStatus status) { told.emplace_back(status, player.rate()); });
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told.back(), std::pair(PlayerStatus::paused, 0.0));
    player.play();
    EXPECT_TRUE(passUntil([&] { return player.status() == PlayerStatus::playing; }));
    EXPECT_EQ(told.back(), std::pair(PlayerStatus::playing, 1.0));
    player.setRate(2);
    EXPECT_EQ(told.back(), std::pair(PlayerStatus::playing, 2.0));
    player.play();
    EXPECT_EQ(told.back(), std::pair(PlayerStatus::playing, 1.0));
    const auto count = told.size();
    player.play();
    EXPECT_EQ(told.size(), count);
    player.pause();
    EXPECT_EQ(told.back(), std::pair(PlayerStatus::paused, 0.0));
}

TEST_P(PlayerContract, TicksAtTheIntervalWhilePlayingAndOnceWhenItStops) {
    std::vector<double> ticks;
    const auto watch = player.observeTime(0.2, [&](double seconds) { ticks.push_back(seconds); });
    player.setRate(2);
    ASSERT_TRUE(passUntil([&] { return player.currentTime() >= 1.4; }));
    // Each interval is reported within a few frames of its start.
    EXPECT_GE(ticks.size(), 5u);
    for (std::size_t i = 0; i < ticks.size(); ++i)
        EXPECT_NEAR(ticks[i], 0.2 * static_cast<double>(i + 1), 0.15);
    player.pause();
    EXPECT_EQ(ticks.back(), player.currentTime());
    const auto count = ticks.size();
    seek(5);
    EXPECT_EQ(ticks.size(), count);
}

TEST_P(PlayerContract, KeepsItsVolumeWhateverItPlays) {
    EXPECT_EQ(player.volume(), 1);
    EXPECT_FALSE(player.isMuted());
    player.setVolume(0.25, true);
    player.setRate(2);
    EXPECT_TRUE(seek(3));
    player.pause();
    EXPECT_EQ(player.volume(), 0.25);
    EXPECT_TRUE(player.isMuted());
    player.setVolume(7, false);
    EXPECT_EQ(player.volume(), 1);
    EXPECT_FALSE(player.isMuted());
}

TEST_P(PlayerContract, SeeksAreClampedAndEndAtTheTimeAskedFor) {
    EXPECT_TRUE(seek(5.01));
    EXPECT_DOUBLE_EQ(player.currentTime(), 5.01);
    EXPECT_TRUE(seek(-3));
    EXPECT_EQ(player.currentTime(), 0);
    EXPECT_TRUE(seek(500));
    EXPECT_DOUBLE_EQ(player.currentTime(), player.duration());
    EXPECT_EQ(player.status(), PlayerStatus::paused);
}

TEST_P(PlayerContract, ANewerSeekOvertakesAnOlderOne) {
    ASSERT_TRUE(seek(1));
    std::vector<std::pair<int, bool>> ends;
    for (int i = 0; i < 5; ++i)
        player.seek(2 + i, [&ends, i](bool finished) { ends.emplace_back(i, finished); });
    EXPECT_EQ(player.currentTime(), 1);
    ASSERT_TRUE(passUntil([&] { return ends.size() == 5; }));
    EXPECT_THAT(ends,
                testing::ElementsAre(std::pair(0, false), std::pair(1, false), std::pair(2, false),
                                     std::pair(3, false), std::pair(4, true)));
    EXPECT_EQ(player.currentTime(), 6);
}

TEST_P(PlayerContract, ACompletionMaySeekAgain) {
    double last = 0;
    std::function<void(bool)> next = [&](bool) {
        if (++last < 5)
            player.seek(last, next);
    };
    player.seek(0, next);
    EXPECT_TRUE(passUntil([&] { return last == 5; }));
    EXPECT_EQ(player.currentTime(), 4);
}

TEST_P(PlayerContract, PlaybackContinuesFromASeekAndNeverJumpsBack) {
    player.play();
    ASSERT_TRUE(passUntil([&] { return player.currentTime() > 0.3; }));
    EXPECT_TRUE(seek(7.02));
    EXPECT_NEAR(player.currentTime(), 7.02, 0.1);
    double least = 12;
    const auto watch =
        player.observeTime(0.1, [&](double seconds) { least = std::min(least, seconds); });
    EXPECT_EQ(player.status(), PlayerStatus::playing);
    ASSERT_TRUE(passUntil([&] { return player.currentTime() > 7.5; }));
    EXPECT_GT(least, 7.02);
}

TEST_P(PlayerContract, PausesOnTheLastFrameAndStaysThere) {
    EXPECT_TRUE(seek(11.5));
    player.play();
    ASSERT_TRUE(passUntil([&] { return player.status() == PlayerStatus::paused; }));
    EXPECT_DOUBLE_EQ(player.currentTime(), player.duration());
    EXPECT_EQ(player.rate(), 0);
    EXPECT_TRUE(seek(11));
    EXPECT_EQ(player.status(), PlayerStatus::paused);
    player.play();
    EXPECT_TRUE(passUntil([&] { return player.currentTime() > 11.3; }));
}

TEST_P(PlayerContract, ItsEndEndsASeek) {
    ASSERT_TRUE(seek(1));
    std::vector<bool> ends;
    player.seek(5, [&](bool finished) { ends.push_back(finished); });
    auto tick = player.observeTime(0.1, [](double) {});
    auto status = player.observeStatus([](PlayerStatus) {});
    auto failure = player.observeFailure([](const Error&) {});
    subject->close();
    EXPECT_THAT(ends, testing::ElementsAre(false));
    // The observers may outlive the player.
    tick.reset();
    status.reset();
    failure.reset();
}

TEST_P(PlayerContract, ACallbackMayEndThePlayer) {
    bool closed = false;
    const auto close = [&] {
        subject->close();
        closed = true;
    };
    player.play();
    auto watch = player.observeTime(0.1, [&](double) { close(); });
    EXPECT_TRUE(passUntil([&] { return closed; }));

    subject = GetParam()();
    closed = false;
    subject->player().seek(3, [&](bool) { close(); });
    EXPECT_TRUE(passUntil([&] { return closed; }));
}

TEST_P(PlayerContract, AFileCutOffWhileOpenPausesThereAndPlaysBefore) {
    ASSERT_TRUE(seek(1));
    subject->cutOff();
    for (std::size_t times = 1; times <= 2; ++times) {
        player.setRate(5);
        ASSERT_TRUE(passUntil([&] { return failures.size() == times; }));
        EXPECT_EQ(failures.back(), static_cast<int>(PlayerFailure::brokeOff));
        EXPECT_EQ(player.status(), PlayerStatus::paused);
        EXPECT_NEAR(player.currentTime(), 6, 2);
        EXPECT_TRUE(seek(2));
        EXPECT_EQ(player.currentTime(), 2);
    }
    EXPECT_TRUE(seek(11));
    EXPECT_TRUE(passUntil([&] { return failures.size() == 3; }));
    EXPECT_NEAR(player.currentTime(), 6, 2);
}

TEST_P(PlayerContract, AFileRemovedWhileOpenIsReportedAndStillPlays) {
    ASSERT_TRUE(seek(1));
    player.play();
    subject->removeFile();
    ASSERT_TRUE(passUntil([&] { return !failures.empty(); }));
    EXPECT_EQ(failures.back(), static_cast<int>(PlayerFailure::vanished));
    EXPECT_EQ(player.status(), PlayerStatus::playing);
    EXPECT_TRUE(seek(3));
}

TEST_P(PlayerContract, AFileThatCannotBePlayedIsReportedLaterAndDoesNothing) {
    watchFailures.reset();
    subject->openText();
    Player& none = subject->player();
    watchFailures =
        none.observeFailure([this](const Error& error) { failures.push_back(error.code); });
    none.play();
    EXPECT_EQ(none.rate(), 0);
    EXPECT_TRUE(passUntil([&] { return failures.size() == 1; }));
    std::optional<bool> end;
    none.seek(1, [&](bool finished) { end = finished; });
    EXPECT_EQ(end, false);
    EXPECT_EQ(none.currentTime(), 0);
    EXPECT_EQ(none.duration(), 0);
}

INSTANTIATE_TEST_SUITE_P(Fake, PlayerContract, testing::Values(&make<FakeSubject>));
INSTANTIATE_TEST_SUITE_P(Mpv, PlayerContract, testing::Values(&make<MpvSubject>));

}  // namespace
}  // namespace tembrix
