#include "core/collections/custom_collection_manager.h"
