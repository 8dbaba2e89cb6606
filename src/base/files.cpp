#include "base/files.h"
