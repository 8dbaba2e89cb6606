#include "base/color.h"
