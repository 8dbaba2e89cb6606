#include "base/base64.h"

#include <array>

namespace tembrix {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> makeValues() {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::int8_t i = 0; i < 64; ++i)
        values[static_cast<unsigned char>(alphabet[i])] = i;
    return values;
}
constexpr auto values = makeValues();

std::int32_t valueOf(char c) {
    return values[static_cast<unsigned char>(c)];
}

}  // namespace

std::string base64Encode(BytesView bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t group = static_cast<std::uint32_t>(bytes[i]) << 16 |
                                    static_cast<std::uint32_t>(bytes[i + 1]) << 8 | bytes[i + 2];
        text += alphabet[group >> 18];
        text += alphabet[group >> 12 & 63];
        text += alphabet[group >> 6 & 63];
        text += alphabet[group & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        std::uint32_t group = static_cast<std::uint32_t>(bytes[i]) << 16;
        if (rest == 2)
            group |= static_cast<std::uint32_t>(bytes[i + 1]) << 8;
        text += alphabet[group >> 18];
        text += alphabet[group >> 12 & 63];
        text += rest == 2 ? alphabet[group >> 6 & 63] : '=';
        text += '=';
    }
    return text;
}

std::optional<Bytes> base64Decode(std::string_view text) {
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    Bytes bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const std::size_t missing = i + 4 == text.size() ? padding : 0;
        std::int32_t group = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const std::int32_t value = k < 4 - missing ? valueOf(text[i + k]) : 0;
            if (value < 0)
                return std::nullopt;
            group = group << 6 | value;
        }
        // Unused bits after the last byte must be zero; otherwise two texts would encode the same
        // bytes.
        if ((missing == 1 && (group & 0xFF) != 0) || (missing == 2 && (group & 0xFFFF) != 0))
            return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(group >> 16));
        if (missing < 2)
            bytes.push_back(static_cast<std::uint8_t>(group >> 8));
        if (missing < 1)
            bytes.push_back(static_cast<std::uint8_t>(group));
    }
    return bytes;
}

}  // namespace tembrix
