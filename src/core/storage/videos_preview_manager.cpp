#include "core/storage/videos_preview_manager.h"
