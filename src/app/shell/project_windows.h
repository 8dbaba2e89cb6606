#pragma once

#include "app/playback/player_services.h"
#include "app/settings/settings_services.h"
#include "app/shell/window_factory.h"

namespace tembrix {

class CoreServices;

// Creates the contents of all windows in the window table. Those that belong to a project are made
// while one is open. `translate` turns a native key event into the key tables' terms.
QtWindowFactory::Makers windowMakers(CoreServices& core, VideoSurfaceFactory makeVideoSurface,
                                     KeyTranslation translate);

}  // namespace tembrix
