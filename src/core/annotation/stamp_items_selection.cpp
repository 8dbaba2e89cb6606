#include "core/annotation/stamp_items_selection.h"
