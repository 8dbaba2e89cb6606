#include "core/collections/hot_key_manager.h"
