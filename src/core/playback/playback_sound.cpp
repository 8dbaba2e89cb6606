#include "core/playback/playback_sound.h"

#include "ports/player.h"

#include "core/commands/command_table.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

PlaybackSound::PlaybackSound(Commands& commands, VideoPlayerManager& player, Settings& settings) {
    const auto apply = [&player, &settings] {
        if (player.player())
            player.player()->setVolume(settings.values->volume / 100.0, settings.values->muted);
    };
    subscriptions_.push_back(player.hasPlayer.observe([apply](const bool&) { apply(); }));
    subscriptions_.push_back(settings.values.observe([apply, &commands](const SettingsValues&) {
        apply();
        commands.refresh();
    }));

    const auto bind = [&](Command command, std::function<void()> run,
                          std::function<bool()> checked = {}) {
        subscriptions_.push_back(commands.bind(
            command,
            {std::move(run), [&player] { return *player.hasPlayer; }, std::move(checked)}));
    };
    bind(
        Command::mute,
        [&settings] { settings.change([](SettingsValues& v) { v.muted = !v.muted; }); },
        [&settings] { return settings.values->muted; });
    bind(Command::louder, [&settings] { setVolume(settings, settings.values->volume + step); });
    bind(Command::quieter, [&settings] { setVolume(settings, settings.values->volume - step); });
}

void setVolume(Settings& settings, int percent) {
    settings.change([percent](SettingsValues& values) {
        values.volume = percent;
        values.muted = false;
    });
}

}  // namespace tembrix
