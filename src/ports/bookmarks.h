#pragma once

#include <filesystem>
#include <optional>

#include "base/bytes.h"

namespace tembrix {

// Persistent references to files that the user has chosen. The same file at the same path gives the
// same bytes.
class Bookmarks {
  public:
    struct Resolved {
        std::filesystem::path path;
        bool stale = false;     // the file was found in another place than the bookmark's
        bool replaced = false;  // another file is at the path now
    };

    virtual ~Bookmarks() = default;
    virtual std::optional<Bytes> make(const std::filesystem::path& file) const = 0;
    // Finds the bookmarked file, even if it was renamed within its folder. If it is not in the
    // folder or its identity is unknown, the file at the path is returned. Absent if there is
    // neither or if the bytes are not a bookmark.
    virtual std::optional<Resolved> resolve(BytesView bookmark) const = 0;
    // Whether two bookmarks refer to the same file, under any name. Without known identities, only
    // equal bytes refer to the same file.
    virtual bool areOfOneFile(BytesView first, BytesView second) const = 0;
};

}  // namespace tembrix
