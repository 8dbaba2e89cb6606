#include "core/shell/windows_manager.h"
