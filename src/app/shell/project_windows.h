#pragma once

#include "app/playback/player_services.h"
#include "app/shell/window_factory.h"

namespace tembrix {

class CoreServices;

// The makers of the contents of all windows in the window table. They are called while a project
// is open.
QtWindowFactory::Makers windowMakers(CoreServices& core, VideoSurfaceFactory makeVideoSurface);

}  // namespace tembrix
