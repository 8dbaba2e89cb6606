#include "core/records/video_records.h"
