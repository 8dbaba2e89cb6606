#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

#include "base/bytes.h"

#include "ports/bookmarks.h"

#include "adapters/qt/file_identity.h"

namespace tembrix {

// Bookmarks that contain the path, the identity and the content of the file. They have priority
// over the path, because recorders reuse file names: if the file at the path is another one, the
// folder is searched for the right one. Only if it is not there, the other file at the path is
// returned.
//
// On a file system with identities, the file is recognized by its identity while the beginning of
// its content is the same; so a recording that is still growing keeps its bookmark, and a file that
// was written over does not. On other file systems the content decides, and at the path it may
// have become longer.
class FileBookmarks final : public Bookmarks {
  public:
    using IdentityOf = std::function<std::optional<FileIdentity>(const std::filesystem::path&)>;

    explicit FileBookmarks(IdentityOf identityOf = fileIdentity)
        : identityOf_(std::move(identityOf)) {}

    std::optional<Bytes> make(const std::filesystem::path& file) const override;
    std::optional<Resolved> resolve(BytesView bookmark) const override;
    bool areOfOneFile(BytesView first, BytesView second) const override;
    std::optional<Bytes> withContent(BytesView bookmark) const override;

  private:
    struct Parts;

    static std::optional<Parts> parse(BytesView bookmark);
    static Bytes encode(const Parts& parts);
    bool isBookmarked(const std::filesystem::path& file, const Parts& parts) const;
    std::optional<std::filesystem::path> findRenamed(const Parts& parts) const;

    IdentityOf identityOf_;
};

}  // namespace tembrix
