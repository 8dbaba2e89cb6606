#include "core/storage/in_memory_storage_manager.h"
