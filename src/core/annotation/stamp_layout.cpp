#include "core/annotation/stamp_layout.h"
