#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tembrix {

// Without leading and trailing white space and line breaks, in the Unicode sense.
std::string trimmed(std::string_view text);

// Without leading and trailing characters that are neither letters nor digits.
std::string strippedToAlphanumerics(std::string_view text);

// Number of code points; a byte that is not UTF-8 counts as one.
std::size_t characterCount(std::string_view text);

std::string replaced(std::string_view text, std::string_view from, std::string_view to);

// Unicode upper and lower case, one code point to one.
std::string upperCased(std::string_view text);
std::string lowerCased(std::string_view text);
std::string firstUpperCased(std::string_view text);

// Case folded and canonically composed: equal results mean equal texts to a reader who ignores
// case.
std::string caseFolded(std::string_view text);
bool containsIgnoringCase(std::string_view text, std::string_view part);

bool isUtf8(std::string_view text);

// Bytes that are not UTF-8 become U+FFFD, so that a broken file name can be shown and stored.
std::string sanitizedUtf8(std::string_view text);

std::string joined(const std::vector<std::string>& parts, std::string_view separator);

}  // namespace tembrix
