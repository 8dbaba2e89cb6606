#include "base/time_text.h"
