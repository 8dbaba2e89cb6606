#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/date.h"
#include "base/result.h"

namespace tembrix {

// Reads a whole file. Errors: domain "file", code = errno.
Result<Bytes> readFile(const std::filesystem::path& path);

// Replaces a file whole: written beside, synced, renamed, so that a reader or a killed process sees
// the old content or the new one. Missing parent folders are not made. On failure the old file
// stays and nothing is left beside it. Errors: domain "file", code = errno.
Result<void> replaceFile(const std::filesystem::path& path, BytesView content);

// Replaces a file whole by a copy of another, which may be too large for memory. `goOn` is asked
// every few megabytes; an answer of false ends the copying with the code ECANCELED. On failure the
// old file stays and nothing is left beside it. A copy onto itself changes nothing.
Result<void> replaceFileByCopy(const std::filesystem::path& path,
                               const std::filesystem::path& source,
                               const std::function<bool()>& goOn = {});

// Removes what a process that was killed in the middle of replacing a file of this folder left
// beside it. Not while this process writes there.
void removeUnfinishedReplacements(const std::filesystem::path& folder);

// Syncs all files and folders below a folder, or one file, so that what takes its name next is
// whole also after a power cut. Errors: domain "file", code = errno.
Result<void> syncTree(const std::filesystem::path& path);

// Whether a text can be the name of an entry of a folder, and leads nowhere else.
bool isFileName(std::string_view name);

// Makes a folder with its parents; an existing one is a success.
Result<void> makeFolder(const std::filesystem::path& path);

// When the file or folder was made; absent where the file system does not tell.
std::optional<Date> creationDate(const std::filesystem::path& path);

// A path as UTF-8 text and back.
std::string pathText(const std::filesystem::path& path);
std::filesystem::path pathFromText(std::string_view utf8);

}  // namespace tembrix
