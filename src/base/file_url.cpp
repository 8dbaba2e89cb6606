#include "base/file_url.h"

#include <charconv>
#include <fmt/format.h>

namespace tembrix {

namespace {

constexpr std::string_view scheme = "file://";

bool standsAsItIs(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/-._~!$&'()*+,;=:@").find(c) != std::string_view::npos;
}

}  // namespace

std::string fileUrl(const std::filesystem::path& path) {
    std::string url(scheme);
    for (const char c : path.string()) {
        if (standsAsItIs(c))
            url += c;
        else
            url += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return url;
}

std::optional<std::filesystem::path> pathOfFileUrl(std::string_view url) {
    if (!url.starts_with(scheme) || !url.substr(scheme.size()).starts_with('/'))
        return std::nullopt;
    url.remove_prefix(scheme.size());
    std::string path;
    while (!url.empty()) {
        auto byte = static_cast<unsigned char>(url.front());
        std::size_t length = 1;
        if (byte == '%') {
            length = 3;
            if (url.size() < length)
                return std::nullopt;
            const auto [end, error] = std::from_chars(url.data() + 1, url.data() + 3, byte, 16);
            if (error != std::errc() || end != url.data() + 3)
                return std::nullopt;
        }
        path += static_cast<char>(byte);
        url.remove_prefix(length);
    }
    return std::filesystem::path(path);
}

}  // namespace tembrix
