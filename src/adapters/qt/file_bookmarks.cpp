#include "adapters/qt/file_bookmarks.h"

#include <charconv>
#include <dirent.h>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "adapters/qt/file_content.h"
#include "adapters/qt/file_identity.h"

namespace tembrix {
namespace fs = std::filesystem;

struct FileBookmarks::Parts {
    FileIdentity identity;
    std::optional<FileContent> content;
    fs::path path;

    bool hasIdentity() const { return identity != FileIdentity{}; }
};

namespace {

// "TSB2 <number> <birth time> <size> <written> <head> <tail>\n<path>", with zeros if there is no
// identity. The path is stored byte for byte, because a file name need not be UTF-8. A folder and a
// file that cannot be read have the form without content, which is also that of old bookmarks:
// "TSB1 <number> <birth time>\n<path>".
constexpr std::string_view mark = "TSB2 ";
constexpr std::string_view markWithoutContent = "TSB1 ";

template <class Number>
bool takeNumber(std::string_view& text, Number& number, char end) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop == text.data() + text.size() || *stop != end)
        return false;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()) + 1);
    return true;
}

}  // namespace

std::optional<FileBookmarks::Parts> FileBookmarks::parse(BytesView bookmark) {
    auto text = asText(bookmark);
    const bool hasContent = text.starts_with(mark);
    if (!hasContent && !text.starts_with(markWithoutContent))
        return std::nullopt;
    text.remove_prefix(mark.size());
    Parts parts;
    if (!takeNumber(text, parts.identity.number, ' ') ||
        !takeNumber(text, parts.identity.birthTime, hasContent ? ' ' : '\n'))
        return std::nullopt;
    if (hasContent) {
        auto& content = parts.content.emplace();
        if (!takeNumber(text, content.size, ' ') || !takeNumber(text, content.written, ' ') ||
            !takeNumber(text, content.head, ' ') || !takeNumber(text, content.tail, '\n'))
            return std::nullopt;
    }
    if (text.empty())
        return std::nullopt;
    parts.path = fs::path(std::string(text));
    return parts;
}

bool FileBookmarks::isBookmarked(const fs::path& file, const Parts& parts) const {
    if (!parts.hasIdentity() && !parts.content) {
        std::error_code error;
        return fs::exists(file, error);
    }
    if (parts.hasIdentity() && identityOf_(file) != parts.identity)
        return false;
    return !parts.content ||
           hasContent(file, *parts.content,
                      parts.hasIdentity() ? ContentMay::change : ContentMay::beLonger);
}

// The listing of a folder contains the number of each file. So only a file with the right number is
// examined, or one with the right size if there are no numbers.
std::optional<fs::path> FileBookmarks::findRenamed(const Parts& parts) const {
    if (!parts.hasIdentity() && (!parts.content || parts.content->size == 0))
        return std::nullopt;
    const auto folder = parts.path.parent_path();
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
    if (!open)
        return std::nullopt;
    while (const auto* entry = ::readdir(open.get())) {
        const auto file = folder / entry->d_name;
        std::error_code error;
        if (parts.hasIdentity() ? entry->d_ino == parts.identity.number && isBookmarked(file, parts)
                                : fs::file_size(file, error) == parts.content->size &&
                                      hasContent(file, *parts.content, ContentMay::beEqual))
            return file;
    }
    return std::nullopt;
}

std::optional<Bytes> FileBookmarks::make(const fs::path& file) const {
    std::error_code error;
    const auto path = fs::absolute(file, error).lexically_normal();
    if (error || file.empty() || !fs::exists(path, error))
        return std::nullopt;
    return encode({identityOf_(path).value_or(FileIdentity{}), fileContent(path), path});
}

Bytes FileBookmarks::encode(const Parts& parts) {
    const auto& [identity, content, path] = parts;
    std::string text(content ? mark : markWithoutContent);
    text += std::to_string(identity.number) + " " + std::to_string(identity.birthTime);
    if (content)
        text += " " + std::to_string(content->size) + " " + std::to_string(content->written) + " " +
                std::to_string(content->head) + " " + std::to_string(content->tail);
    return toBytes(text + "\n" + path.string());
}

// Without an identity, the first file that is found at the path is taken for the bookmarked one.
std::optional<Bytes> FileBookmarks::withContent(BytesView bookmark) const {
    auto parts = parse(bookmark);
    if (!parts || parts->content)
        return std::nullopt;
    const auto found = resolve(bookmark);
    if (!found || found->replaced)
        return std::nullopt;
    parts->content = fileContent(found->path);
    return parts->content ? std::optional(encode(*parts)) : std::nullopt;
}

std::optional<Bookmarks::Resolved> FileBookmarks::resolve(BytesView bookmark) const {
    const auto parts = parse(bookmark);
    if (!parts)
        return std::nullopt;
    if (isBookmarked(parts->path, *parts))
        return Resolved{parts->path, false, false};
    if (auto renamed = findRenamed(*parts))
        return Resolved{std::move(*renamed), true, false};
    std::error_code error;
    if (!fs::exists(parts->path, error))
        return std::nullopt;
    // A copy of the file, such as a restored one, is as good as the file.
    const bool isCopy = parts->content && parts->content->size > 0 &&
                        hasContent(parts->path, *parts->content, ContentMay::beEqual);
    return Resolved{parts->path, false, !isCopy};
}

bool FileBookmarks::areOfOneFile(BytesView first, BytesView second) const {
    if (asText(first) == asText(second))
        return true;
    const auto one = parse(first);
    const auto other = parse(second);
    if (!one || !other || one->identity != other->identity ||
        (!one->hasIdentity() && one->path != other->path))
        return false;
    if (one->content && other->content)
        return haveEqualContent(*one->content, *other->content);
    return one->hasIdentity();
}

}  // namespace tembrix
