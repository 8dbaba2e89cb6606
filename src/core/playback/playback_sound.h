#pragma once

#include <vector>

#include "base/signal.h"

#include "core/commands/commands.h"
#include "core/settings/settings.h"

namespace tembrix {

class VideoPlayerManager;

// Plays the open video at the volume of the settings, and binds the commands that change it. Lives
// as long as the project.
class PlaybackSound {
  public:
    static constexpr int step = 10;  // percent

    PlaybackSound(Commands& commands, VideoPlayerManager& player, Settings& settings);

  private:
    std::vector<Subscription> subscriptions_;
};

// Sets the volume in percent, as the user does: a video that is muted becomes audible.
void setVolume(Settings& settings, int percent);

}  // namespace tembrix
