#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "base/files.h"

#include "ports/bookmarks.h"

namespace tembrix {

// Bookmarks of files registered with add(), which need not exist, and of files on the disk. A file
// has an identity that follows rename(): the path where it was created, with a number if an earlier
// file of that path still exists under another name.
class FakeBookmarks final : public Bookmarks {
  public:
    // Registers a file and returns its bookmark.
    Bytes add(const std::filesystem::path& file) {
        removed_.erase(file);
        if (!added_.contains(file))
            added_.emplace(file, freeIdentity(pathText(file)));
        return bytesOf(file);
    }
    void remove(const std::filesystem::path& file) {
        added_.erase(file);
        removed_.insert(file);
    }
    void rename(const std::filesystem::path& from, const std::filesystem::path& to) {
        const auto identity = identityOf(from);
        remove(from);
        removed_.erase(to);
        added_.insert_or_assign(to, identity);
    }

    std::optional<Bytes> make(const std::filesystem::path& file) const override {
        if (!exists(file))
            return std::nullopt;
        return bytesOf(file);
    }
    std::optional<Resolved> resolve(BytesView bookmark) const override {
        const auto parts = parse(bookmark);
        if (!parts)
            return std::nullopt;
        const bool isThere = exists(parts->path);
        if (isThere && identityOf(parts->path) == parts->identity)
            return Resolved{parts->path, false, false};
        for (const auto& [file, identity] : added_) {
            if (identity == parts->identity && file.parent_path() == parts->path.parent_path())
                return Resolved{file, true, false};
        }
        if (!isThere)
            return std::nullopt;
        return Resolved{parts->path, false, true};
    }
    bool areOfOneFile(BytesView first, BytesView second) const override {
        const auto one = parse(first);
        const auto other = parse(second);
        return asText(first) == asText(second) ||
               (one && other && one->identity == other->identity);
    }

  private:
    static constexpr std::string_view prefix = "bookmark:";
    static constexpr char separator = '\x1F';  // precedes an identity that differs from the path

    struct Parts {
        std::filesystem::path path;
        std::string identity;
    };

    static std::optional<Parts> parse(BytesView bookmark) {
        auto text = asText(bookmark);
        if (!text.starts_with(prefix))
            return std::nullopt;
        text.remove_prefix(prefix.size());
        const auto end = text.find(separator);
        const std::string_view path = text.substr(0, end);
        const auto identity = end == std::string_view::npos ? path : text.substr(end + 1);
        return Parts{pathFromText(path), std::string(identity)};
    }
    std::string freeIdentity(const std::string& path) const {
        const auto isUsed = [&](const std::string& identity) {
            return std::any_of(added_.begin(), added_.end(),
                               [&](const auto& file) { return file.second == identity; });
        };
        std::string identity = path;
        for (int number = 2; isUsed(identity); ++number)
            identity = std::to_string(number) + " " + path;
        return identity;
    }
    std::string identityOf(const std::filesystem::path& file) const {
        const auto found = added_.find(file);
        return found == added_.end() ? pathText(file) : found->second;
    }
    Bytes bytesOf(const std::filesystem::path& file) const {
        std::string text = std::string(prefix) + pathText(file);
        if (const auto identity = identityOf(file); identity != pathText(file))
            text += separator + identity;
        return toBytes(text);
    }
    bool exists(const std::filesystem::path& file) const {
        std::error_code ignored;
        return added_.contains(file) ||
               (!removed_.contains(file) && std::filesystem::exists(file, ignored));
    }

    std::map<std::filesystem::path, std::string> added_;  // path to identity
    std::set<std::filesystem::path> removed_;
};

}  // namespace tembrix
