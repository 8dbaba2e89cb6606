#include "core/settings/settings_checks.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <system_error>

#include "base/files.h"
#include "base/utf8_text.h"

namespace tembrix {

namespace {

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == '\x7f';
}

// Letters of any language, digits, hyphens, and dots between them.
bool isHost(std::string_view host) {
    constexpr std::string_view others = "!\"#$%&'()*+,/:;<=>?@[\\]^_`{|}~";
    return !host.empty() && host.front() != '.' && host.find("..") == host.npos &&
           host.find_first_of(others) == host.npos;
}

bool isNumberedHost(std::string_view host) {
    return host.size() > 2 &&
           host.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

bool isPort(std::string_view port) {
    int number = 0;
    const auto end = port.data() + port.size();
    const auto read = std::from_chars(port.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number >= 1 && number <= 65535;
}

}  // namespace

const char* addressFault(std::string_view address) {
    if (address.empty())
        return nullptr;
    if (std::any_of(address.begin(), address.end(), isBlank))
        return "addressHasBlank";
    const std::string lower = lowerCased(address);
    std::string_view rest = lower;
    if (rest.starts_with("https://"))
        rest.remove_prefix(8);
    else if (rest.starts_with("http://"))
        rest.remove_prefix(7);
    else
        return "addressHasNoScheme";
    if (rest.find_first_of("?#") != rest.npos)
        return "addressHasQuestion";
    const std::string_view server = rest.substr(0, rest.find('/'));
    std::string_view host = server;
    std::optional<std::string_view> port;
    const auto bracket = server.starts_with('[') ? server.find(']') : server.npos;
    const auto colon = server.find(':', bracket == server.npos ? 0 : bracket);
    if (colon != server.npos) {
        host = server.substr(0, colon);
        port = server.substr(colon + 1);
    }
    const bool numbered = host.starts_with('[') && host.ends_with(']') &&
                          isNumberedHost(host.substr(1, host.size() - 2));
    if (!numbered && !isHost(host))
        return "addressHasNoHost";
    if (port && !isPort(*port))
        return "addressHasBadPort";
    return nullptr;
}

const char* folderFault(const std::filesystem::path& folder) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored))
        return "settingsFolderMissing";
    return isWritableFolder(folder) ? nullptr : "settingsFolderNotWritable";
}

}  // namespace tembrix
