#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tembrix {

// An sRGB color, components 0 to 1, alpha not premultiplied.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const Color&) const = default;
};

// Lenient: 3 (RGB), 6 (RRGGBB) or 8 (AARRGGBB) hex digits with anything that is not a letter or
// digit stripped from both ends; any other length is opaque black.
Color parseHexColor(std::string_view text);

// Six upper-case hex digits, components truncated; absent for a color with components that are not
// finite.
std::optional<std::string> hexText(const Color& color);

// Luminance below one half: white text reads better on it than black.
bool isDarkColor(const Color& color);

// The same question for a six-digit text, by perceived brightness; a text of another length is not
// dark.
bool isDarkHexColor(std::string_view text);

}  // namespace tembrix
