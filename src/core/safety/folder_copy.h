#pragma once

#include <filesystem>
#include <functional>

#include "base/result.h"

namespace tembrix {

// Whether a file or folder is there; one that cannot be looked at is not.
bool isThere(const std::filesystem::path& path);

// Whether there is a file, or a folder with anything in it or that cannot be listed.
bool holdsSomething(const std::filesystem::path& path);

enum class CopyOf { file, folder };

// Replaces `target` by a copy of `source`, which has to be of that kind. The copy is finished and
// synced beside the target before it takes its place, so that an interrupted run leaves the old
// content or the new one; see finishReplacing. The old content is moved to `kept`, which has to be
// on the same disk; without that place it is removed. Errors: domain "file", code = errno.
Result<void> replaceByCopy(const std::filesystem::path& source, const std::filesystem::path& target,
                           CopyOf kind, const std::filesystem::path& kept = {});

// Copies a file or a folder with all that is in it to a place where nothing is yet.
Result<void> copyInto(const std::filesystem::path& source, const std::filesystem::path& place);

// Puts a finished folder in the place of `target`; the last step of replaceByCopy.
Result<void> moveIntoPlace(const std::filesystem::path& finished,
                           const std::filesystem::path& target,
                           const std::filesystem::path& kept = {});

// The place beside `target` where its next content is made.
std::filesystem::path stagingPlace(const std::filesystem::path& target);

// Ends what a killed process left half done. The old content comes back if the new one had not yet
// taken its place; otherwise it is moved to `kept`, or removed without such a place.
void finishReplacing(const std::filesystem::path& target, const std::filesystem::path& kept = {});

// The same for everything in a folder that was to be replaced. `kept` returns the place for the
// old content of a target.
using KeptPlace = std::function<std::filesystem::path(const std::filesystem::path& target)>;
void finishReplacingIn(const std::filesystem::path& folder, const KeptPlace& kept = {});

}  // namespace tembrix
