#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tembrix {

// What distinguishes the content of a file from that of other files: its size and two samples.
// Recorders write lengths into the first kilobytes of a large file when they finish it, so that
// these do not count.
struct FileContent {
    std::uint64_t size = 0;
    std::int64_t written = 0;  // when the content was last changed, in nanoseconds since 1970
    std::uint64_t head = 0;    // hash of up to 64 KB near the beginning
    std::uint64_t tail = 0;    // hash of up to 64 KB at the end
};

// Whether size and samples are equal. A file that was only touched has the same content.
bool haveEqualContent(const FileContent& one, const FileContent& other);

// Absent for a folder and for a file that cannot be read. Does not change the file's access time
// if the user owns the file.
std::optional<FileContent> fileContent(const std::filesystem::path& file);

enum class ContentMay {
    beEqual,   // nothing was changed
    beLonger,  // something may have been appended
    change,    // anything may have been changed behind the first sample
};
// Whether the file still has the content. A large file of the same size that was not written since
// is not read.
bool hasContent(const std::filesystem::path& file, const FileContent& content, ContentMay may);

}  // namespace tembrix
