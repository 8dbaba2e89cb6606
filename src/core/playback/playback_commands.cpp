#include "core/playback/playback_commands.h"

#include <algorithm>
#include <utility>

#include "core/commands/command_table.h"
#include "core/keyboard/hot_key_manager.h"
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
    const auto seekBy = [&](Command command, double seconds) {
        bind(command, [&player, seconds] { player.seekBy(seconds); });
    };
    constexpr double smallStep = 5, largeStep = 10;  // seconds
    bind(Command::playPause, [&player] { player.togglePlayPause(); });
    seekBy(Command::seekBackward3, -HotKeyManager::seekStep);
    seekBy(Command::seekForward3, HotKeyManager::seekStep);
    seekBy(Command::seekBackward5, -smallStep);
    seekBy(Command::seekForward5, smallStep);
    seekBy(Command::seekBackward10, -largeStep);
    seekBy(Command::seekForward10, largeStep);
    bind(Command::slower,
         [&player] { player.setPlaybackSpeed(neighborSpeed(player.playbackSpeed(), false)); });
    bind(Command::faster,
         [&player] { player.setPlaybackSpeed(neighborSpeed(player.playbackSpeed(), true)); });
    bind(Command::normalSpeed, [&player] { player.setPlaybackSpeed(1.0); });
    subscriptions_.push_back(
        player.hasPlayer.observe([&commands](const bool&) { commands.refresh(); }));
}

}  // namespace tembrix
