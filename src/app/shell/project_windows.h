#pragma once

#include "app/playback/player_services.h"
#include "app/shell/window_factory.h"

namespace tembrix {

class CoreServices;

// Creates the contents of all windows in the window table. Called while a project is open.
QtWindowFactory::Makers windowMakers(CoreServices& core, VideoSurfaceFactory makeVideoSurface);

}  // namespace tembrix
