#pragma once

#include <cstdint>

#include "base/bytes.h"

namespace tembrix {

// A hash that distinguishes contents and detects damage; not for security. The value is stored in
// files and must not change.
std::uint64_t contentHash(BytesView bytes);

}  // namespace tembrix
