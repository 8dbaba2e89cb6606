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
        bool stale = false;  // found, but not where the bookmark was made
    };

    virtual ~Bookmarks() = default;
    virtual std::optional<Bytes> make(const std::filesystem::path& file) const = 0;
    // Absent if the file is not there or the bytes are no bookmark. Follows a rename in its folder.
    virtual std::optional<Resolved> resolve(BytesView bookmark) const = 0;
};

}  // namespace tembrix
