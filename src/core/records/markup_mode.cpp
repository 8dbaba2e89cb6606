#include "core/records/markup_mode.h"
