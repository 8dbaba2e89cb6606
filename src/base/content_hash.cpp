#include "base/content_hash.h"

#include <cstddef>

namespace tembrix {

namespace {

// Multiplies by an odd constant and folds the high bits into the low ones, so that each bit of the
// input affects all bits of the result.
std::uint64_t mixed(std::uint64_t value) {
    value ^= value >> 32;
    value *= 0xD6E8FEB86659FD93u;
    value ^= value >> 32;
    value *= 0xD6E8FEB86659FD93u;
    return value ^ (value >> 32);
}

}  // namespace

std::uint64_t contentHash(BytesView bytes) {
    std::uint64_t hash = mixed(bytes.size() + 1);
    std::size_t at = 0;
    for (; at + 8 <= bytes.size(); at += 8) {
        std::uint64_t word = 0;
        for (std::size_t i = 0; i < 8; ++i)
            word |= std::uint64_t{bytes[at + i]} << (8 * i);
        hash = (hash ^ mixed(word)) * 0x9E3779B97F4A7C15u;
    }
    std::uint64_t rest = 0;
    for (std::size_t i = at; i < bytes.size(); ++i)
        rest = (rest << 8) | bytes[i];
    return mixed(hash ^ mixed(rest + 0x632BE59BD9B4E019u));
}

}  // namespace tembrix
