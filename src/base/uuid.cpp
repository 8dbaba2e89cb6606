#include "base/uuid.h"
