#include "core/playback/playback_commands.h"

#include <algorithm>
#include <utility>

#include "core/commands/command_table.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

namespace {

// The offered speed next to the present one, upwards or downwards; the present one at the end.
double neighborSpeed(double speed, bool faster) {
    const auto& speeds = VideoPlayerManager::speeds;
    if (faster) {
        const auto next = std::upper_bound(speeds.begin(), speeds.end(), speed);
        return next == speeds.end() ? speed : *next;
    }
    const auto next = std::lower_bound(speeds.begin(), speeds.end(), speed);
    return next == speeds.begin() ? speed : *std::prev(next);
}

}  // namespace

PlaybackCommands::PlaybackCommands(Commands& commands, VideoPlayerManager& player) {
    const auto bind = [&](Command command, std::function<void()> run) {
        subscriptions_.push_back(
            commands.bind(command, {std::move(run), [&player] { return *player.hasPlayer; }, {}}));
    };
    const auto seek = [&](Command backward, Command forward) {
        bind(backward, [&, backward] { player.seekBy(-*commands.amount(backward)); });
        bind(forward, [&, forward] { player.seekBy(*commands.amount(forward)); });
    };
    bind(Command::playPause, [&player] { player.togglePlayPause(); });
    seek(Command::seekBackward3, Command::seekForward3);
    seek(Command::seekBackward5, Command::seekForward5);
    seek(Command::seekBackward10, Command::seekForward10);
    bind(Command::slower,
         [&player] { player.setPlaybackSpeed(neighborSpeed(player.playbackSpeed(), false)); });
    bind(Command::faster,
         [&player] { player.setPlaybackSpeed(neighborSpeed(player.playbackSpeed(), true)); });
    bind(Command::normalSpeed, [&player] { player.setPlaybackSpeed(1.0); });
    subscriptions_.push_back(
        player.hasPlayer.observe([&commands](const bool&) { commands.refresh(); }));
}

}  // namespace tembrix
