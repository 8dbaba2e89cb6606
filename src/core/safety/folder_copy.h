#pragma once

#include <filesystem>
#include <functional>

#include "base/result.h"

namespace tembrix {

// Whether a file or folder exists. Returns false if that cannot be determined.
bool isThere(const std::filesystem::path& path);

// Whether the path is a file, or a folder that is not empty or cannot be listed.
bool holdsSomething(const std::filesystem::path& path);

enum class CopyOf { file, folder };

// Replaces `target` by a copy of `source`, which must be of that kind. The copy is completed and
// synced next to the target first, so that an interruption leaves either the old or the new
// content; see finishReplacing. The old content is moved to `kept`, which must be on the same disk.
// It is removed if `kept` is empty or if it equals the new content. Errors: domain "file", code =
// errno.
Result<void> replaceByCopy(const std::filesystem::path& source, const std::filesystem::path& target,
                           CopyOf kind, const std::filesystem::path& kept = {});

// Copies a file, or a folder with its content, to a path that does not exist yet.
Result<void> copyInto(const std::filesystem::path& source, const std::filesystem::path& place);

// Whether two files, or two folders with all that they contain, have the same content.
bool hasEqualContent(const std::filesystem::path& one, const std::filesystem::path& other);

// Replaces `target` by a finished folder; the last step of replaceByCopy.
Result<void> moveIntoPlace(const std::filesystem::path& finished,
                           const std::filesystem::path& target,
                           const std::filesystem::path& kept = {});

// The path next to `target` where its new content is prepared.
std::filesystem::path stagingPlace(const std::filesystem::path& target);

// Finishes an interrupted replacement. If the new content was not in place yet, the old content is
// restored; otherwise it is moved to `kept`, or removed if `kept` is empty.
void finishReplacing(const std::filesystem::path& target, const std::filesystem::path& kept = {});

// Does the same for all targets in a folder. `kept` returns the path for the old content of a
// target.
using KeptPlace = std::function<std::filesystem::path(const std::filesystem::path& target)>;
void finishReplacingIn(const std::filesystem::path& folder, const KeptPlace& kept = {});

}  // namespace tembrix
