#include "core/collections/tag_library_manager.h"
