#include "core/collections/standard_collections.h"
