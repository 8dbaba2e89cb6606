#include "adapters/qt/file_bookmarks.h"

#include <charconv>
#include <dirent.h>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "adapters/qt/file_identity.h"

namespace tembrix {
namespace fs = std::filesystem;

namespace {

// "TSB1 <number> <birth time>\n<path>", with zeros if there is no identity. The path is stored byte
// for byte, because a file name need not be UTF-8.
constexpr std::string_view mark = "TSB1 ";

struct Parts {
    FileIdentity identity;
    fs::path path;
};

template <class Number>
bool takeNumber(std::string_view& text, Number& number, char end) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop == text.data() + text.size() || *stop != end)
        return false;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()) + 1);
    return true;
}

std::optional<Parts> parse(BytesView bookmark) {
    auto text = asText(bookmark);
    if (!text.starts_with(mark))
        return std::nullopt;
    text.remove_prefix(mark.size());
    Parts parts;
    if (!takeNumber(text, parts.identity.number, ' ') ||
        !takeNumber(text, parts.identity.birthTime, '\n') || text.empty())
        return std::nullopt;
    parts.path = fs::path(std::string(text));
    return parts;
}

std::optional<fs::path> findRenamed(const fs::path& folder, const FileIdentity& identity) {
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
    if (!open)
        return std::nullopt;
    // The listing contains the number of each file, so only a file with the right number is
    // examined.
    while (const auto* entry = ::readdir(open.get())) {
        if (entry->d_ino != identity.number)
            continue;
        const auto file = folder / entry->d_name;
        if (fileIdentity(file) == identity)
            return file;
    }
    return std::nullopt;
}

}  // namespace

std::optional<Bytes> FileBookmarks::make(const fs::path& file) const {
    std::error_code error;
    const auto path = fs::absolute(file, error).lexically_normal();
    if (error || file.empty() || !fs::exists(path, error))
        return std::nullopt;
    const auto identity = fileIdentity(path).value_or(FileIdentity{});
    return toBytes(std::string(mark) + std::to_string(identity.number) + " " +
                   std::to_string(identity.birthTime) + "\n" + path.string());
}

std::optional<Bookmarks::Resolved> FileBookmarks::resolve(BytesView bookmark) const {
    const auto parts = parse(bookmark);
    if (!parts)
        return std::nullopt;
    const bool hasIdentity = parts->identity != FileIdentity{};
    std::error_code error;
    const bool isThere = fs::exists(parts->path, error);
    if (hasIdentity) {
        if (isThere && fileIdentity(parts->path) == parts->identity)
            return Resolved{parts->path, false, false};
        if (auto renamed = findRenamed(parts->path.parent_path(), parts->identity))
            return Resolved{std::move(*renamed), true, false};
    }
    if (!isThere)
        return std::nullopt;
    return Resolved{parts->path, false, hasIdentity};
}

bool FileBookmarks::areOfOneFile(BytesView first, BytesView second) const {
    if (asText(first) == asText(second))
        return true;
    const auto one = parse(first);
    const auto other = parse(second);
    return one && other && one->identity == other->identity && one->identity != FileIdentity{};
}

}  // namespace tembrix
