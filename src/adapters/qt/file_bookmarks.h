#pragma once

#include "base/bytes.h"

#include "ports/bookmarks.h"

namespace tembrix {

// Bookmarks that hold the path and the file's identity. The path goes first; a file that is no
// longer there is looked for in its folder by identity, since renaming is what users do. Where the
// file system gives no identity a rename is not followed.
class FileBookmarks final : public Bookmarks {
  public:
    std::optional<Bytes> make(const std::filesystem::path& file) const override;
    std::optional<Resolved> resolve(BytesView bookmark) const override;
};

}  // namespace tembrix
