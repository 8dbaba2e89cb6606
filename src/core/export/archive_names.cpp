#include "core/export/archive_names.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <optional>
#include <vector>

#include "base/bytes.h"

namespace tembrix {

namespace {

// The parts of the zip format that are needed to find the flags of each entry. Numbers are
// little-endian.
constexpr std::uint32_t endSignature = 0x06054b50;
constexpr std::uint32_t end64LocatorSignature = 0x07064b50;
constexpr std::uint32_t end64Signature = 0x06064b50;
constexpr std::uint32_t entrySignature = 0x02014b50;
constexpr std::uint32_t localSignature = 0x04034b50;
constexpr std::uint64_t endSize = 22;
constexpr std::uint64_t end64LocatorSize = 20;
constexpr std::uint64_t end64Size = 56;
constexpr std::uint64_t entrySize = 46;
constexpr std::uint64_t localSize = 30;
constexpr std::uint64_t entryFlags = 8;  // offset of the flags
constexpr std::uint64_t localFlags = 6;
constexpr std::uint16_t extra64 = 1;  // the extra field with 64-bit numbers
constexpr std::uint16_t utf8Flag = 0x800;
constexpr std::uint32_t elsewhere = 0xFFFFFFFF;  // the number is in a 64-bit field instead
constexpr std::uint64_t largestDirectory = std::uint64_t{1} << 28;

std::uint64_t number(const Bytes& bytes, std::uint64_t at, int size) {
    std::uint64_t value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | bytes[at + static_cast<std::uint64_t>(i)];
    return value;
}

class ArchiveFile {
  public:
    explicit ArchiveFile(const std::filesystem::path& path)
        : file_(path, std::ios::in | std::ios::out | std::ios::binary) {
        file_.seekg(0, std::ios::end);
        const auto size = static_cast<std::streamoff>(file_.tellg());
        size_ = file_ && size > 0 ? static_cast<std::uint64_t>(size) : 0;
    }

    std::uint64_t size() const { return size_; }
    // Absent if the file is too short or the bytes do not start with the given signature.
    std::optional<Bytes> read(std::uint64_t at, std::uint64_t count,
                              std::optional<std::uint32_t> signature = {}) {
        if (at > size_ || count > size_ - at)
            return std::nullopt;
        Bytes bytes(count);
        file_.seekg(static_cast<std::streamoff>(at));
        file_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
        if (!file_ || (signature && number(bytes, 0, 4) != *signature))
            return std::nullopt;
        return bytes;
    }
    void write(std::uint64_t at, std::uint16_t value) {
        const char bytes[] = {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
        file_.seekp(static_cast<std::streamoff>(at));
        file_.write(bytes, sizeof bytes);
    }

  private:
    std::fstream file_;
    std::uint64_t size_ = 0;
};

struct Directory {
    std::uint64_t start = 0;
    std::uint64_t size = 0;
};

std::optional<Directory> findDirectory(ArchiveFile& file) {
    if (file.size() < endSize)
        return std::nullopt;
    const auto endAt = file.size() - endSize;
    const auto end = file.read(endAt, endSize, endSignature);
    if (!end)
        return std::nullopt;
    Directory directory{number(*end, 16, 4), number(*end, 12, 4)};
    if (endAt >= end64LocatorSize)
        if (const auto locator =
                file.read(endAt - end64LocatorSize, end64LocatorSize, end64LocatorSignature)) {
            const auto end64 = file.read(number(*locator, 8, 8), end64Size, end64Signature);
            if (!end64)
                return std::nullopt;
            directory = {number(*end64, 48, 8), number(*end64, 40, 8)};
        }
    return directory;
}

// The offset of the entry's local header. Absent if it cannot be found.
std::optional<std::uint64_t> localHeader(const Bytes& entries, std::uint64_t entry,
                                         std::uint64_t nameLength, std::uint64_t extraLength) {
    if (const auto offset = number(entries, entry + 42, 4); offset != elsewhere)
        return offset;
    // The 64-bit field contains only the numbers that need 64 bits, in this order.
    std::uint64_t skipped = 0;
    for (const std::uint64_t place : {24U, 20U})
        if (number(entries, entry + place, 4) == elsewhere)
            skipped += 8;
    const auto end = entry + entrySize + nameLength + extraLength;
    for (auto at = entry + entrySize + nameLength; at + 4 <= end;) {
        const auto size = number(entries, at + 2, 2);
        if (number(entries, at, 2) == extra64 && skipped + 8 <= size && at + 4 + size <= end)
            return number(entries, at + 4 + skipped, 8);
        at += 4 + size;
    }
    return std::nullopt;
}

}  // namespace

void markArchiveNamesAsUtf8(const std::filesystem::path& archive) {
    ArchiveFile file(archive);
    const auto directory = findDirectory(file);
    if (!directory || directory->size > largestDirectory)
        return;
    const auto entries = file.read(directory->start, directory->size);
    if (!entries)
        return;
    for (std::uint64_t entry = 0;
         entry + entrySize <= entries->size() && number(*entries, entry, 4) == entrySignature;) {
        const auto nameLength = number(*entries, entry + 28, 2);
        const auto extraLength = number(*entries, entry + 30, 2);
        const auto next =
            entry + entrySize + nameLength + extraLength + number(*entries, entry + 32, 2);
        if (next > entries->size())
            return;
        const auto name = entries->begin() + static_cast<std::ptrdiff_t>(entry + entrySize);
        const bool plain = std::all_of(name, name + static_cast<std::ptrdiff_t>(nameLength),
                                       [](std::uint8_t c) { return c < 0x80; });
        const auto local = localHeader(*entries, entry, nameLength, extraLength);
        const auto header =
            plain || !local ? std::nullopt : file.read(*local, localSize, localSignature);
        if (header) {
            const auto mark = [&](std::uint64_t at, std::uint64_t flags) {
                file.write(at, static_cast<std::uint16_t>(flags | utf8Flag));
            };
            mark(directory->start + entry + entryFlags, number(*entries, entry + entryFlags, 2));
            mark(*local + localFlags, number(*header, localFlags, 2));
        }
        entry = next;
    }
}

}  // namespace tembrix
