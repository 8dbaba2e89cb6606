#pragma once

#include <span>

#include "core/commands/command_table.h"

namespace tembrix {

// Keys that belong to a window or to a control rather than to a command, for the pages that list
// all keys.
struct FixedKey {
    CommandScope scope;
    const char* caption;  // as it is shown
    const char* textKey;
};

std::span<const FixedKey> fixedKeys();

}  // namespace tembrix
