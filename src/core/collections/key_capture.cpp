#include "core/collections/key_capture.h"
