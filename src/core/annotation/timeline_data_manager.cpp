#include "core/annotation/timeline_data_manager.h"
