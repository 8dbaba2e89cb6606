#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/bytes.h"

namespace tembrix {

// RFC 4648 with padding.
std::string base64Encode(BytesView bytes);

// Strict: absent unless an encoder would write exactly this text.
std::optional<Bytes> base64Decode(std::string_view text);

}  // namespace tembrix
