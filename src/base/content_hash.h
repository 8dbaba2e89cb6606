#pragma once

#include <cstdint>

#include "base/bytes.h"

namespace tembrix {

// A hash of bytes that tells contents apart and finds damage; not for security. The value is stored
// in files and never changes.
std::uint64_t contentHash(BytesView bytes);

}  // namespace tembrix
