#include "core/storage/written_values.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <functional>
#include <utility>

#include "base/bytes.h"
#include "base/content_hash.h"
#include "base/files.h"

namespace tembrix {

namespace {

constexpr std::string_view heading = "Tembrix Stat, written values 2\n";
constexpr std::string_view formerHeading = "Tembrix Stat, written values 1\n";  // without a check

// The next field of a line, up to the separator.
std::string_view next(std::string_view& rest, char separator) {
    const auto end = std::min(rest.find(separator), rest.size());
    const auto part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

bool readNumber(std::string_view text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

// The file consists of a heading, a check of the rest, the identity and one line per value: number,
// hash and key. If a line cannot be read, its value is written again. Without a matching check no
// working copy may be compared with the file, so only the values that are not to be written are
// taken from it.
WrittenValues::WrittenValues(std::filesystem::path file) : file_(std::move(file)) {
    const auto bytes = readFile(file_);
    if (!bytes)
        return;
    std::string_view rest = asText(*bytes);
    if (rest.starts_with(heading)) {
        rest.remove_prefix(heading.size());
        std::uint64_t check = 0;
        checked_ = readNumber(next(rest, '\n'), check) && check == contentHash(toBytes(rest));
    } else if (rest.starts_with(formerHeading)) {
        rest.remove_prefix(formerHeading.size());
    } else {
        return;
    }
    changed_ = !checked_;
    identity_ = next(rest, '\n');
    while (!rest.empty()) {
        std::string_view line = next(rest, '\n');
        Entry entry;
        if (readNumber(next(line, ' '), entry.number) && readNumber(next(line, ' '), entry.hash) &&
            (checked_ || entry.hash == 0))
            entries_.insert_or_assign(std::string(line), entry);
    }
}

std::uint64_t WrittenValues::lastNumber() const {
    std::uint64_t last = 0;
    if (!checked_)
        return last;
    for (const auto& [key, entry] : entries_)
        last = std::max(last, entry.number);
    return last;
}

void WrittenValues::useFor(const std::string& identity) {
    if (identity == identity_)
        return;
    identity_ = identity;
    entries_.clear();
    changed_ = true;
}

std::optional<WrittenValues::Entry> WrittenValues::find(std::string_view key) const {
    const auto found = entries_.find(key);
    return found == entries_.end() ? std::nullopt : std::optional(found->second);
}

void WrittenValues::set(const std::string& key, Entry entry) {
    if (key.find('\n') != key.npos || find(key) == entry)
        return;
    entries_.insert_or_assign(key, entry);
    changed_ = true;
}

void WrittenValues::clear() {
    changed_ = changed_ || !entries_.empty();
    entries_.clear();
}

Result<void> WrittenValues::save() {
    if (!changed_)
        return {};
    std::string text = identity_ + "\n";
    for (const auto& [key, entry] : entries_)
        text += fmt::format("{:x} {:x} {}\n", entry.number, entry.hash, key);
    const auto check = contentHash(toBytes(text));
    auto written = replaceFile(file_, toBytes(fmt::format("{}{:x}\n{}", heading, check, text)));
    changed_ = !written;
    return written;
}

}  // namespace tembrix
