#include "core/shell/videos_view_model.h"
