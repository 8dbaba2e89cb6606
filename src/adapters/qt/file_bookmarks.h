#pragma once

#include "base/bytes.h"

#include "ports/bookmarks.h"

namespace tembrix {

// Bookmarks that contain the path and the identity of the file. The identity has priority, because
// recorders reuse file names: if the file at the path is another one, the folder is searched for
// the right one. Only if it is not there, the other file at the path is returned. On a file system
// without identities only the path is used, and renamed files are not found.
class FileBookmarks final : public Bookmarks {
  public:
    std::optional<Bytes> make(const std::filesystem::path& file) const override;
    std::optional<Resolved> resolve(BytesView bookmark) const override;
    bool areOfOneFile(BytesView first, BytesView second) const override;
};

}  // namespace tembrix
