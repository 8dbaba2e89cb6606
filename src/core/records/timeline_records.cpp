#include "core/records/timeline_records.h"
