#include "core/export/export_helper.h"
