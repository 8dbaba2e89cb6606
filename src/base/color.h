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

// Lenient: accepts 3 (RGB), 6 (RRGGBB) or 8 (AARRGGBB) hex digits after removing other characters
// than letters and digits from both ends. Any other length is opaque black.
Color parseHexColor(std::string_view text);

// Six upper-case hex digits, components truncated. Absent if a component is not finite.
std::optional<std::string> hexText(const Color& color);

// Whether the luminance is below one half, so that white text is more readable on it than black.
bool isDarkColor(const Color& color);

// The same for a text of six digits, by perceived brightness. A text of another length is not dark.
bool isDarkHexColor(std::string_view text);

// The ratio of the relative luminances, from 1 to 21; texts are readable from 4.5. Alpha is
// ignored.
double contrast(const Color& a, const Color& b);

}  // namespace tembrix
