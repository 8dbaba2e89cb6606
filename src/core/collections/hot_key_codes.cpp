#include "core/collections/hot_key_codes.h"
