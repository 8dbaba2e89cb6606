#include "base/color.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>

#include "base/utf8_text.h"

namespace tembrix {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The number formed by the leading hex digits; 0 if there are none.
std::uint32_t hexPrefix(std::string_view text) {
    std::uint32_t number = 0;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            break;
        number = number << 4 | static_cast<std::uint32_t>(digit);
    }
    return number;
}

Color fromBytes(std::uint32_t alpha, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return {red / 255.0, green / 255.0, blue / 255.0, alpha / 255.0};
}

}  // namespace

Color parseHexColor(std::string_view text) {
    const std::string stripped = strippedToAlphanumerics(text);
    const std::uint32_t n = hexPrefix(stripped);
    switch (characterCount(stripped)) {
        case 8:
            return fromBytes(n >> 24, n >> 16 & 255, n >> 8 & 255, n & 255);
        case 6:
            return fromBytes(255, n >> 16, n >> 8 & 255, n & 255);
        case 3:
            return fromBytes(255, (n >> 8) * 17, (n >> 4 & 15) * 17, (n & 15) * 17);
        default:
            return fromBytes(255, 0, 0, 0);
    }
}

std::optional<std::string> hexText(const Color& color) {
    if (!std::isfinite(color.red) || !std::isfinite(color.green) || !std::isfinite(color.blue))
        return std::nullopt;
    const auto byte = [](double component) {
        return static_cast<int>(std::clamp(component, 0.0, 1.0) * 255);
    };
    return fmt::format("{:02X}{:02X}{:02X}", byte(color.red), byte(color.green), byte(color.blue));
}

bool isDarkColor(const Color& color) {
    return 0.2126 * color.red + 0.7152 * color.green + 0.0722 * color.blue < 0.5;
}

double contrast(const Color& a, const Color& b) {
    const auto luminance = [](const Color& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) +
               0.0722 * linear(color.blue);
    };
    const double first = luminance(a), second = luminance(b);
    const auto [dark, light] = std::minmax(first, second);
    return (light + 0.05) / (dark + 0.05);
}

bool isDarkHexColor(std::string_view text) {
    if (characterCount(text) != 6)
        return false;
    const std::uint32_t n = hexPrefix(text);
    // Computed in thousandths, so that a gray of exactly one half is not misjudged by rounding.
    return 299 * (n >> 16) + 587 * (n >> 8 & 255) + 114 * (n & 255) < 128'000;
}

}  // namespace tembrix
