#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tembrix {

// Raw data: a bookmark, an encoded document, a stored value.
using Bytes = std::vector<std::uint8_t>;
using BytesView = std::span<const std::uint8_t>;

inline Bytes toBytes(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

inline std::string_view asText(BytesView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace tembrix
