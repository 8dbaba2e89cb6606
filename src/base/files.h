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

// Whether a file has exactly this content.
bool fileContains(const std::filesystem::path& path, BytesView content);

// Replaces a file atomically: writes a new file next to it, syncs and renames it, so that a reader
// or a killed process sees either the old or the new content. Missing parent folders are not
// created. On failure the old file is kept and the new one removed. Errors: domain "file", code =
// errno.
Result<void> replaceFile(const std::filesystem::path& path, BytesView content);

// Replaces a file atomically by a copy of another, which may be too large for memory. `goOn` is
// called every few megabytes; if it returns false, copying ends with the code ECANCELED. On failure
// the old file is kept and the new one removed. `begins` is called with the path of the new file
// before that file exists, so that it can be removed if the process is killed. A copy onto itself
// changes nothing.
Result<void> replaceFileByCopy(
    const std::filesystem::path& path, const std::filesystem::path& source,
    const std::function<bool()>& goOn = {},
    const std::function<void(const std::filesystem::path&)>& begins = {});

// Removes the temporary file of one interrupted replacement. Files of other names are left alone.
void removeUnfinishedReplacement(const std::filesystem::path& file);

// Removes the temporary files of replacements that were interrupted in this folder. Must not be
// called while this process writes there.
void removeUnfinishedReplacements(const std::filesystem::path& folder);

// Syncs a file, or all files and folders below a folder, so that a subsequent rename is complete
// also after a power failure. Errors: domain "file", code = errno.
Result<void> syncTree(const std::filesystem::path& path);

// Whether a text is a valid name for an entry of a folder, without path separators.
bool isFileName(std::string_view name);

// Creates a folder and its parents. It is not an error if it exists.
Result<void> makeFolder(const std::filesystem::path& path);

// Whether files can be created in the folder, as far as its permissions say.
bool isWritableFolder(const std::filesystem::path& path);

// When the file or folder was created; absent if the file system does not record it.
std::optional<Date> creationDate(const std::filesystem::path& path);

// Convert a path to UTF-8 text and back.
std::string pathText(const std::filesystem::path& path);
std::filesystem::path pathFromText(std::string_view utf8);

}  // namespace tembrix
