#include "core/records/annotation_records.h"
