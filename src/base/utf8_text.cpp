#include "base/utf8_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utf8proc.h>

namespace tembrix {

namespace {

struct Step {
    utf8proc_int32_t codepoint;  // -1 for a byte that is not part of a UTF-8 sequence
    std::size_t length;
};

Step stepAt(std::string_view text, std::size_t at) {
    if (static_cast<unsigned char>(text[at]) < 0x80)
        return {text[at], 1};
    utf8proc_int32_t codepoint = -1;
    const auto length =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + at,
                         static_cast<utf8proc_ssize_t>(text.size() - at), &codepoint);
    if (length <= 0)
        return {-1, 1};
    return {codepoint, static_cast<std::size_t>(length)};
}

bool isWhiteSpace(utf8proc_int32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029 ||
           (c >= 0 && utf8proc_category(c) == UTF8PROC_CATEGORY_ZS);
}

bool isAlphanumeric(utf8proc_int32_t c) {
    if (c < 0)
        return false;
    // Letters, marks and numbers are the first categories.
    const auto category = utf8proc_category(c);
    return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_NO;
}

void append(std::string& out, utf8proc_int32_t codepoint) {
    utf8proc_uint8_t buffer[4];
    const auto length = utf8proc_encode_char(codepoint, buffer);
    out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
}

// The text without leading and trailing characters for which `drop` returns true.
template <class Drop>
std::string_view stripped(std::string_view text, Drop drop) {
    std::size_t begin = text.size();
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size();) {
        const auto step = stepAt(text, at);
        if (!drop(step.codepoint)) {
            begin = std::min(begin, at);
            end = at + step.length;
        }
        at += step.length;
    }
    return begin < end ? text.substr(begin, end - begin) : std::string_view();
}

template <class Map>
std::string mapped(std::string_view text, Map map) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto step = stepAt(text, at);
        if (step.codepoint < 0)
            out.append(text.substr(at, step.length));
        else
            append(out, map(step.codepoint));
        at += step.length;
    }
    return out;
}

}  // namespace

std::string trimmed(std::string_view text) {
    return std::string(stripped(text, isWhiteSpace));
}

std::string strippedToAlphanumerics(std::string_view text) {
    return std::string(stripped(text, [](auto c) { return !isAlphanumeric(c); }));
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); at += stepAt(text, at).length)
        ++count;
    return count;
}

std::string replaced(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty())
        return std::string(text);
    std::string out;
    std::size_t at = 0;
    for (auto found = text.find(from); found != std::string_view::npos;
         found = text.find(from, at)) {
        out.append(text.substr(at, found - at)).append(to);
        at = found + from.size();
    }
    return out.append(text.substr(at));
}

std::string upperCased(std::string_view text) {
    return mapped(text, utf8proc_toupper);
}

std::string lowerCased(std::string_view text) {
    return mapped(text, utf8proc_tolower);
}

std::string firstUpperCased(std::string_view text) {
    if (text.empty())
        return {};
    const auto first = stepAt(text, 0).length;
    return upperCased(text.substr(0, first)).append(text.substr(first));
}

std::string caseFolded(std::string_view text) {
    const std::string clean = sanitizedUtf8(text);
    utf8proc_uint8_t* folded = nullptr;
    const auto length = utf8proc_map(
        reinterpret_cast<const utf8proc_uint8_t*>(clean.data()),
        static_cast<utf8proc_ssize_t>(clean.size()), &folded,
        static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(folded, &std::free);
    if (length < 0)
        return clean;
    return {reinterpret_cast<const char*>(folded), static_cast<std::size_t>(length)};
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    return caseFolded(text).find(caseFolded(part)) != std::string::npos;
}

bool isUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        // Whole documents are checked, and most of their bytes are ASCII, so eight are checked at a
        // time.
        std::uint64_t eight = 0;
        if (at + sizeof eight <= text.size()) {
            std::memcpy(&eight, text.data() + at, sizeof eight);
            if ((eight & 0x8080808080808080u) == 0) {
                at += sizeof eight;
                continue;
            }
        }
        const auto step = stepAt(text, at);
        if (step.codepoint < 0)
            return false;
        at += step.length;
    }
    return true;
}

std::string sanitizedUtf8(std::string_view text) {
    if (isUtf8(text))
        return std::string(text);
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const auto step = stepAt(text, at);
        append(out, step.codepoint < 0 ? 0xFFFD : step.codepoint);
        at += step.length;
    }
    return out;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string out;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            out += separator;
        out += parts[i];
    }
    return out;
}

}  // namespace tembrix
