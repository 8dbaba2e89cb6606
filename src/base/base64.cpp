#include "base/base64.h"
