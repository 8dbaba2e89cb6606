#include "core/storage/video_files_manager.h"
