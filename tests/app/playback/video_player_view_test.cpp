#include "app/playback/video_player_view.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QTest>
#include <QToolButton>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/app_project.h"
#include "app/widgets/tabular_label.h"
#include "app/window_tests.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"

namespace tembrix {
namespace {

using testing::ElementsAre;

class VideoPlayerViewTest : public testing::Test {
  protected:
    VideoPlayerViewTest() {
        project.openVideo();
        view = std::make_unique<VideoPlayerView>(PlayerServices{
            project.texts, project.core.commands, project.core.settings, project.player,
            [](QWidget* parent) -> QWidget* { return new QLabel(parent); }});
        view->resize(853, 440);
        view->show();
        view->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(view.get()));
    }

    FakePlayer& player() { return *project.players.player(); }
    QToolButton* button(const char* name) { return child<QToolButton>(*view, name); }
    void press(const char* name) { QTest::keyClick(button(name), Qt::Key_Space); }

    AppProject project;
    std::unique_ptr<VideoPlayerView> view;
};

TEST_F(VideoPlayerViewTest, TheBarDrivesThePlayerFromItsOwnTime) {
    player().advanceTo(30.07);
    press("videoControlBackward10");
    press("videoControlBackward5");
    press("videoControlForward10");
    press("videoControlForward5");
    ASSERT_EQ(player().seeks.size(), 4u);
    EXPECT_NEAR(player().seeks[0], 20.07, 1e-9);
    EXPECT_NEAR(player().seeks[1], 15.07, 1e-9);
    EXPECT_NEAR(player().seeks[2], 25.07, 1e-9);
    EXPECT_NEAR(player().seeks[3], 30.07, 1e-9);

    press("videoControlPlayPause");
    EXPECT_EQ(player().rate(), 0);
    press("videoControlPlayPause");
    EXPECT_EQ(player().rate(), 1);
}

TEST_F(VideoPlayerViewTest, TheSeekButtonsFollowTheSettings) {
    project.texts.set("seconds", "{0} s");
    project.texts.set("decimalSeparator", ",");
    project.core.settings.change([](SettingsValues& values) {
        values.smallSeekStep = 2.5;
        values.largeSeekStep = 60;
    });
    EXPECT_EQ(button("videoControlBackward5")->text(), "2,5 s");
    EXPECT_EQ(button("videoControlForward10")->text(), "60 s");
    player().advanceTo(30);
    press("videoControlBackward5");
    EXPECT_NEAR(player().seeks.back(), 27.5, 1e-9);

    project.core.settings.change([](SettingsValues& values) { values.playsOnOpening = false; });
    project.openVideo("second.mp4");
    EXPECT_EQ(*project.player.status, PlayerStatus::paused);
}

TEST_F(VideoPlayerViewTest, TheSpeedMenuOffersTheSpeedsAndShowsTheCurrentOne) {
    auto* speed = button("videoControlSpeed");
    QStringList offered;
    for (const QAction* entry : speed->menu()->actions())
        offered << entry->text();
    EXPECT_EQ(offered, QStringList({"0.10x", "0.25x", "0.50x", "0.75x", "1.00x", "1.50x", "2.00x",
                                    "5.00x"}));
    EXPECT_EQ(speed->text(), "1.00x");

    player().pause();
    speed->menu()->actions().at(6)->trigger();
    EXPECT_EQ(player().rate(), 2);
    EXPECT_EQ(speed->text(), "2.00x");
    EXPECT_TRUE(speed->menu()->actions().at(6)->isChecked());
    project.player.cleanup();
    EXPECT_EQ(speed->text(), "1.00x");
}

TEST_F(VideoPlayerViewTest, VolumeAndMuteAreSetByBarAndCommandAndRemembered) {
    auto* slider = child<QSlider>(*view, "videoControlVolume");
    EXPECT_EQ(slider->value(), 100);
    QTest::keyClick(slider, Qt::Key_PageDown);
    EXPECT_DOUBLE_EQ(player().volume(), 0.9);
    press("commandMute");
    EXPECT_TRUE(player().isMuted());
    EXPECT_TRUE(button("commandMute")->isChecked());
    project.openVideo("second.mp4");
    EXPECT_TRUE(player().isMuted());
    EXPECT_DOUBLE_EQ(player().volume(), 0.9);
    Commands& commands = project.core.commands;
    for (int i = 0; i < 3; ++i)
        commands.run(Command::louder);  // becomes audible; 100 percent is the most
    EXPECT_FALSE(player().isMuted());
    EXPECT_DOUBLE_EQ(player().volume(), 1);
    EXPECT_EQ(slider->value(), 100);
    commands.run(Command::quieter);
    Settings stored(project.defaults, project.log);
    EXPECT_EQ(stored.values->volume, 90);
    EXPECT_FALSE(stored.values->muted);
    project.player.cleanup();
    EXPECT_FALSE(button("commandMute")->isEnabled());
}

TEST_F(VideoPlayerViewTest, TimesFollowThePlayerAndNothingCanBePressedWithoutOne) {
    player().advanceTo(61.5);
    EXPECT_EQ(child<TabularLabel>(*view, "videoControlTimeNow")->text(), "00:01:01");
    EXPECT_EQ(child<TabularLabel>(*view, "videoControlTimeWhole")->text(), "/ 00:01:40");
    project.player.cleanup();
    EXPECT_EQ(child<TabularLabel>(*view, "videoControlTimeNow")->text(), "00:00:00");
    EXPECT_FALSE(button("videoControlPlayPause")->isEnabled());
    project.openVideo("second.mp4");
    EXPECT_TRUE(button("videoControlPlayPause")->isEnabled());
}

TEST_F(VideoPlayerViewTest, TheBarIsBelowThePictureAndIsReachedInReadingOrder) {
    const auto* video = child(*view, "videoPlayerPicture");
    const auto* play = button("videoControlPlayPause");
    EXPECT_GE(play->mapTo(view.get(), QPoint(0, 0)).y(), video->geometry().bottom());
    EXPECT_EQ(unnamedControls(*view), QStringList());

    button("videoControlBackward10")->setFocus();
    std::vector<std::string> order;
    for (int i = 0; i < 6; ++i) {
        order.push_back(view->focusWidget()->objectName().toStdString());
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("videoControlBackward10", "videoControlBackward5",
                                   "videoControlPlayPause", "videoControlForward5",
                                   "videoControlForward10", "videoControlSpeed"));
    picture(*view, "player");
}

TEST_F(VideoPlayerViewTest, AFailureIsShownUntilTheNextVideo) {
    auto* line = child<QLabel>(*view, "videoPlayerFailure");
    EXPECT_FALSE(line->isVisible());
    player().fail({"player", static_cast<int>(PlayerFailure::vanished), "gone"});
    EXPECT_TRUE(line->isVisible());
    EXPECT_EQ(line->text(), "videoPlayerVanished");
    player().fail({"player", static_cast<int>(PlayerFailure::brokeOff), "no further"});
    EXPECT_EQ(line->text(), "videoPlayerBrokeOff");
    EXPECT_TRUE(*project.player.hasPlayer);
    player().fail({"media", 7, "broken"});
    EXPECT_EQ(line->text(), "videoPlayerCannotPlay");
    project.player.cleanup();
    EXPECT_FALSE(line->isVisible());
}

}  // namespace
}  // namespace tembrix
