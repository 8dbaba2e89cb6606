#include "adapters/sqlite/recovery_file.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "base/content_hash.h"
#include "base/date.h"

namespace tembrix::sqlite {

namespace {

constexpr std::string_view beginning = "TembrixRecovery2";
constexpr std::string_view formerBeginning = "TembrixRecovery1";  // without base numbers

enum Kind : std::uint64_t { removed, data, text, date, boolean };

class Writer {
  public:
    void number(std::uint64_t value) {
        for (int shift = 0; shift < 64; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    void block(BytesView content) {
        number(content.size());
        bytes.insert(bytes.end(), content.begin(), content.end());
    }
    void block(std::string_view content) { block(toBytes(content)); }

    Bytes bytes;
};

// Reads what the Writer wrote. After a failure all further results are empty.
class Reader {
  public:
    explicit Reader(BytesView bytes) : rest_(bytes) {}

    std::uint64_t number() {
        std::uint64_t value = 0;
        const auto bytes = take(8);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            value |= std::uint64_t{bytes[i]} << (8 * i);
        return value;
    }
    BytesView block() { return take(number()); }
    std::string text() { return std::string(asText(block())); }
    bool failed() const { return failed_; }
    bool atEnd() const { return rest_.empty(); }

  private:
    BytesView take(std::uint64_t size) {
        if (size > rest_.size()) {
            failed_ = true;
            rest_ = {};
            return {};
        }
        const auto taken = rest_.first(static_cast<std::size_t>(size));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    BytesView rest_;
    bool failed_ = false;
};

void writeValue(Writer& writer, const std::optional<StoredValue>& value) {
    if (!value) {
        writer.number(removed);
    } else if (const auto* bytes = std::get_if<Bytes>(&*value)) {
        writer.number(data);
        writer.block(*bytes);
    } else if (const auto* pieces = std::get_if<SharedPieces>(&*value)) {
        writer.number(data);
        writer.block(joined(**pieces));
    } else if (const auto* string = std::get_if<std::string>(&*value)) {
        writer.number(text);
        writer.block(std::string_view(*string));
    } else if (const auto* moment = std::get_if<Date>(&*value)) {
        writer.number(date);
        writer.number(std::bit_cast<std::uint64_t>(moment->secondsSince1970));
    } else {
        writer.number(boolean);
        writer.number(std::get<bool>(*value) ? 1 : 0);
    }
}

// Returns false for an unknown kind of value.
bool readValue(Reader& reader, std::optional<StoredValue>& value) {
    switch (reader.number()) {
        case removed:
            return true;
        case data: {
            const auto bytes = reader.block();
            value = Bytes(bytes.begin(), bytes.end());
            return true;
        }
        case text:
            value = reader.text();
            return true;
        case date:
            value = Date{std::bit_cast<double>(reader.number())};
            return true;
        case boolean:
            value = reader.number() != 0;
            return true;
        default:
            return false;
    }
}

}  // namespace

Bytes encodeRecovery(const Recovery& recovery) {
    Writer writer;
    writer.block(beginning);
    writer.block(std::string_view(recovery.identity));
    writer.number(recovery.changes.size());
    for (const auto& [key, change] : recovery.changes) {
        writer.block(std::string_view(key));
        writer.number(change.number);
        writer.number(change.base);
        writeValue(writer, change.value);
    }
    writer.number(contentHash(writer.bytes));
    return std::move(writer.bytes);
}

std::optional<Recovery> decodeRecovery(BytesView file) {
    if (file.size() < 8)
        return std::nullopt;
    const auto content = file.first(file.size() - 8);
    if (Reader(file.last(8)).number() != contentHash(content))
        return std::nullopt;
    Reader reader(content);
    Recovery recovery;
    const std::string begins = reader.text();
    if (begins != beginning && begins != formerBeginning)
        return std::nullopt;
    recovery.identity = reader.text();
    for (auto left = reader.number(); left > 0 && !reader.failed(); --left) {
        const std::string key = reader.text();
        PendingChange change;
        change.number = reader.number();
        if (begins == beginning)
            change.base = reader.number();
        if (!readValue(reader, change.value))
            return std::nullopt;
        recovery.changes.insert_or_assign(key, std::move(change));
    }
    if (reader.failed() || !reader.atEnd())
        return std::nullopt;
    return recovery;
}

}  // namespace tembrix::sqlite
