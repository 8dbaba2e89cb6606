#include "app/playback/player_control_panel.h"

#include <memory>
#include <vector>

#include "ports/player.h"
#include "ports/texts.h"

#include "app/playback/video_control_panel_view.h"
#include "app/widgets/translated.h"
#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/playback/video_player_manager.h"
#include "core/settings/settings.h"

namespace tembrix {

QWidget* makePlayerControlPanel(VideoPlayerManager& player, Commands& commands, const Texts& texts,
                                QWidget* parent) {
    const auto run = [&commands](Command command) {
        return [&commands, command] { commands.run(command); };
    };
    auto* panel = new VideoControlPanelView(
        texts,
        {run(Command::seekBackward10), run(Command::seekBackward5), run(Command::playPause),
         run(Command::seekForward5), run(Command::seekForward10),
         [&player](double speed) { player.setPlaybackSpeed(speed); },
         [&player](double seconds) { player.seek(seconds); }},
        parent);

    const auto showTimes = [panel, &player] {
        panel->setTimes(player.currentTime(), player.videoDuration());
    };
    const auto showPlayer = [panel, &player, showTimes] {
        panel->setOperable(*player.hasPlayer);
        showTimes();
    };
    const auto showStatus = [panel, &player] {
        panel->setPlaying(*player.status == PlayerStatus::playing);
    };
    const auto showSpeed = [panel, &player] { panel->setSpeed(player.playbackSpeed()); };
    const auto showSteps = [panel, &commands, &texts] {
        panel->setSteps(numberText(*commands.amount(Command::seekForward5), texts),
                        numberText(*commands.amount(Command::seekForward10), texts));
    };
    showPlayer();
    showStatus();
    showSpeed();
    followLanguage(panel, texts, showSteps);

    auto subscriptions = std::make_shared<std::vector<Subscription>>();
    const auto follow = [&](Subscription subscription) {
        subscriptions->push_back(std::move(subscription));
    };
    follow(player.hasPlayer.observe([showPlayer](const bool&) { showPlayer(); }));
    follow(player.currentTimeValue.observe([showTimes](const double&) { showTimes(); }));
    follow(player.status.observe([showStatus](const PlayerStatus&) { showStatus(); }));
    follow(player.playbackSpeedValue.observe([showSpeed](const double&) { showSpeed(); }));
    follow(commands.captionsChanged.observe(showSteps));
    QObject::connect(panel, &QObject::destroyed, panel,
                     [subscriptions] { subscriptions->clear(); });
    return panel;
}

}  // namespace tembrix
