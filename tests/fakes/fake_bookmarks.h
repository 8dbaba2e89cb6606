#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "base/files.h"

#include "ports/bookmarks.h"

namespace tembrix {

// Bookmarks of files that a test names with add(), so that no video need exist, and of files that
// are on the disk. A file follows rename() as the real ones follow a rename in their folder.
class FakeBookmarks final : public Bookmarks {
  public:
    // Returns the bookmark, which is what most tests want.
    Bytes add(const std::filesystem::path& file) {
        removed_.erase(file);
        added_.insert(file);
        return bytesOf(file);
    }
    void remove(const std::filesystem::path& file) {
        added_.erase(file);
        removed_.insert(file);
    }
    void rename(const std::filesystem::path& from, const std::filesystem::path& to) {
        remove(from);
        add(to);
        for (auto& [made, place] : renamed_)
            if (place == from)
                place = to;
        renamed_[from] = to;
    }

    std::optional<Bytes> make(const std::filesystem::path& file) const override {
        if (!exists(file))
            return std::nullopt;
        return bytesOf(file);
    }
    std::optional<Resolved> resolve(BytesView bookmark) const override {
        const auto text = asText(bookmark);
        if (!text.starts_with(prefix))
            return std::nullopt;
        const auto made = pathFromText(text.substr(prefix.size()));
        if (exists(made))
            return Resolved{made, false};
        const auto place = renamed_.find(made);
        if (place == renamed_.end() || !exists(place->second))
            return std::nullopt;
        return Resolved{place->second, true};
    }

  private:
    static constexpr std::string_view prefix = "bookmark:";

    static Bytes bytesOf(const std::filesystem::path& file) {
        return toBytes(std::string(prefix) + pathText(file));
    }
    bool exists(const std::filesystem::path& file) const {
        std::error_code ignored;
        return added_.contains(file) ||
               (!removed_.contains(file) && std::filesystem::exists(file, ignored));
    }

    std::set<std::filesystem::path> added_;
    std::set<std::filesystem::path> removed_;
    std::map<std::filesystem::path, std::filesystem::path> renamed_;
};

}  // namespace tembrix
