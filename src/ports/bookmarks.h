#pragma once

#include <filesystem>
#include <optional>

#include "base/bytes.h"

namespace tembrix {

// Durable handles of files that the user picked. The same file at the same path gives the same
// bytes.
class Bookmarks {
  public:
    struct Resolved {
        std::filesystem::path path;
        bool stale = false;     // found, but not where the bookmark was made
        bool replaced = false;  // the path is there, but the file at it is not the bookmarked one
    };

    virtual ~Bookmarks() = default;
    virtual std::optional<Bytes> make(const std::filesystem::path& file) const = 0;
    // Finds the file that the bookmark was made of, also after a rename in its folder. If that file
    // is not in the folder, or if its identity is not known, the path decides. Absent if neither
    // leads to a file or the bytes are not a bookmark.
    virtual std::optional<Resolved> resolve(BytesView bookmark) const = 0;
    // Whether two bookmarks were made of one file, under whatever names. Without known identities
    // only equal bytes count.
    virtual bool areOfOneFile(BytesView first, BytesView second) const = 0;
};

}  // namespace tembrix
