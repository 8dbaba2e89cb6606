#pragma once

#include <vector>

#include "base/signal.h"

#include "core/commands/commands.h"

namespace tembrix {

class VideoPlayerManager;

// Binds the playback commands to the player of the open project, for as long as the object lives.
class PlaybackCommands {
  public:
    PlaybackCommands(Commands& commands, VideoPlayerManager& player);

  private:
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
