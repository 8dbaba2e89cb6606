#include "core/export/cut_planning.h"
