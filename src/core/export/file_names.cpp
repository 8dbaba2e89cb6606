#include "core/export/file_names.h"

#include <algorithm>
#include <array>

#include "base/utf8_text.h"

namespace tembrix {

namespace {

// File systems allow 255 bytes or characters. Encrypted folders and suffixes added by programs need
// some of them.
constexpr std::size_t longestName = 200;

bool isForbidden(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
           std::string_view("/\\:?*\"<>|").find(c) != std::string_view::npos;
}

std::string cleaned(std::string_view text) {
    std::string result = sanitizedUtf8(text);
    std::replace_if(result.begin(), result.end(), isForbidden, '-');
    return result;
}

// Shortens a text to a number of bytes without splitting a character.
void shorten(std::string& text, std::size_t size) {
    if (text.size() <= size)
        return;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    text.resize(size);
}

// Windows reserves these names for devices, with any extension, in any case and with trailing
// blanks.
bool namesDevice(std::string_view name) {
    std::string_view stem = name.substr(0, name.find('.'));
    stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const std::string folded = lowerCased(stem);
    static constexpr std::array<std::string_view, 6> devices{"con", "prn",    "aux",
                                                             "nul", "conin$", "conout$"};
    if (std::find(devices.begin(), devices.end(), folded) != devices.end())
        return true;
    if (!folded.starts_with("com") && !folded.starts_with("lpt"))
        return false;
    const std::string_view number = std::string_view(folded).substr(3);
    const bool digit = number.size() == 1 && number[0] >= '0' && number[0] <= '9';
    return digit || number == "\u00B9" || number == "\u00B2" || number == "\u00B3";
}

}  // namespace

std::string portableFileName(std::string_view text, std::string_view ending) {
    const std::string tail = cleaned(ending);
    std::string name = cleaned(text);
    shorten(name, longestName - std::min(tail.size(), longestName));
    name += tail;
    name.resize(name.find_last_not_of(". ") + 1);
    if (name.empty())
        return "-";
    return namesDevice(name) ? "_" + name : name;
}

std::string DistinctFileNames::add(const std::string& name) {
    const auto dot = name.rfind('.');
    const std::string stem = dot == 0 ? name : name.substr(0, dot);
    const std::string extension = name.substr(stem.size());
    std::string distinct = name;
    for (int number = 2; !used_.insert(caseFolded(distinct)).second; ++number)
        distinct = portableFileName(stem, "_" + std::to_string(number) + extension);
    return distinct;
}

}  // namespace tembrix
