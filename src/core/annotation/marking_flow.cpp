#include "core/annotation/marking_flow.h"
