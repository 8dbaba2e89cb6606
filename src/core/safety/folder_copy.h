#pragma once

#include <filesystem>

#include "base/result.h"

namespace tembrix {

// Whether a file or folder is there; one that cannot be looked at is not.
bool isThere(const std::filesystem::path& path);

// Whether there is a file, or a folder with anything in it or that cannot be listed.
bool holdsSomething(const std::filesystem::path& path);

enum class CopyOf { file, folder };

// Replaces `target` by a copy of `source`, which has to be of that kind. The copy is finished and
// synced beside the target before it takes its place, so that an interrupted run leaves the old
// content or the new one; see finishReplacing. Errors: domain "file", code = errno.
Result<void> replaceByCopy(const std::filesystem::path& source, const std::filesystem::path& target,
                           CopyOf kind);

// Puts a finished folder in the place of `target`; the way that replaceByCopy ends.
Result<void> moveIntoPlace(const std::filesystem::path& finished,
                           const std::filesystem::path& target);

// The place beside `target` where its next content is made.
std::filesystem::path stagingPlace(const std::filesystem::path& target);

// Ends what a killed process left half done: the old content comes back where the new one had not
// yet taken its place, and what was left beside it goes.
void finishReplacing(const std::filesystem::path& target);

// The same for everything in a folder that was to be replaced.
void finishReplacingIn(const std::filesystem::path& folder);

}  // namespace tembrix
