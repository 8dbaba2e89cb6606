#include "core/collections/collections_bookmarks_manager.h"
