#include "core/playback/video_player_manager.h"
