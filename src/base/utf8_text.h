#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tembrix {

// Removes leading and trailing white space and line breaks, as defined by Unicode.
std::string trimmed(std::string_view text);

// Removes leading and trailing characters that are neither letters nor digits.
std::string strippedToAlphanumerics(std::string_view text);

// The number of code points. A byte that is not UTF-8 counts as one.
std::size_t characterCount(std::string_view text);

std::string replaced(std::string_view text, std::string_view from, std::string_view to);

// Convert to Unicode upper and lower case, one code point to one.
std::string upperCased(std::string_view text);
std::string lowerCased(std::string_view text);
std::string firstUpperCased(std::string_view text);

// Case folded and canonically composed: texts that differ only in case or composition have equal
// results.
std::string caseFolded(std::string_view text);
bool containsIgnoringCase(std::string_view text, std::string_view part);

bool isUtf8(std::string_view text);

// Replaces bytes that are not UTF-8 by U+FFFD, so that a broken file name can be shown and stored.
std::string sanitizedUtf8(std::string_view text);

std::string joined(const std::vector<std::string>& parts, std::string_view separator);

}  // namespace tembrix
