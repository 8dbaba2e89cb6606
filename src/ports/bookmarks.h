#pragma once

#include <filesystem>
#include <optional>

#include "base/bytes.h"

namespace tembrix {

// Persistent references to files that the user has chosen. A file that was not changed gives the
// same bytes at the same path.
class Bookmarks {
  public:
    struct Resolved {
        std::filesystem::path path;
        bool stale = false;     // the file was found in another place than the bookmark's
        bool replaced = false;  // another file is at the path now, or the file was written over
    };

    virtual ~Bookmarks() = default;
    virtual std::optional<Bytes> make(const std::filesystem::path& file) const = 0;
    // Finds the bookmarked file, even if it was renamed within its folder. If it is not in the
    // folder, the file at the path is returned. Absent if there is neither or if the bytes are not
    // a bookmark.
    virtual std::optional<Resolved> resolve(BytesView bookmark) const = 0;
    // Whether two bookmarks were made of the same file, under any name. On a file system that
    // cannot tell files apart by numbers, only bookmarks of one path are.
    virtual bool areOfOneFile(BytesView first, BytesView second) const = 0;
    // The bookmark with the content of the file that it finds, if it has none. Absent if it has, or
    // if it cannot be told that the file is the bookmarked one.
    virtual std::optional<Bytes> withContent(BytesView) const { return std::nullopt; }
};

}  // namespace tembrix
