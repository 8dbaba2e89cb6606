#include "base/shortened.h"

#include <cstddef>

namespace tembrix {

std::string shortened(std::string_view text) {
    constexpr std::size_t mostBytes = 1000;  // more than fits into any line
    if (text.size() <= mostBytes)
        return std::string(text);
    const auto continues = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
    };
    std::size_t end = mostBytes;
    while (end > 0 && continues(text[end]))
        --end;
    return std::string(text.substr(0, end)) + "…";
}

}  // namespace tembrix
