#pragma once

#include "base/bytes.h"

#include "ports/bookmarks.h"

namespace tembrix {

// Bookmarks that contain the path and the identity of the file. The identity decides, because
// recorders reuse file names: a file that is no longer at the path is looked for in its folder, and
// only then does another file at the path count. Where the file system gives no identity, the path
// alone decides and a rename is not followed.
class FileBookmarks final : public Bookmarks {
  public:
    std::optional<Bytes> make(const std::filesystem::path& file) const override;
    std::optional<Resolved> resolve(BytesView bookmark) const override;
    bool areOfOneFile(BytesView first, BytesView second) const override;
};

}  // namespace tembrix
