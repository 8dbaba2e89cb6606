#include "base/uuid.h"

#include <cstring>
#include <random>

namespace tembrix {

namespace {

constexpr std::array<int, 16> digitAt = {0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};
constexpr std::array<int, 4> hyphenAt = {8, 13, 18, 23};
constexpr char digits[] = "0123456789ABCDEF";

// The value of each hex digit, -1 for any other byte. A table, because reading a document parses
// tens of thousands of ids.
constexpr std::array<std::int8_t, 256> makeDigitValues() {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::int8_t i = 0; i < 10; ++i)
        values[static_cast<std::size_t>('0' + i)] = i;
    for (std::int8_t i = 0; i < 6; ++i) {
        values[static_cast<std::size_t>('A' + i)] = static_cast<std::int8_t>(10 + i);
        values[static_cast<std::size_t>('a' + i)] = static_cast<std::int8_t>(10 + i);
    }
    return values;
}
constexpr auto digitValues = makeDigitValues();

int digitValue(char c) {
    return digitValues[static_cast<unsigned char>(c)];
}

}  // namespace

Uuid Uuid::random() {
    thread_local std::random_device entropy;
    Uuid id;
    for (std::size_t i = 0; i < 16; i += 4) {
        const auto word = static_cast<std::uint32_t>(entropy());
        std::memcpy(&id.bytes_[i], &word, 4);
    }
    id.bytes_[6] = static_cast<std::uint8_t>((id.bytes_[6] & 0x0F) | 0x40);
    id.bytes_[8] = static_cast<std::uint8_t>((id.bytes_[8] & 0x3F) | 0x80);
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36)
        return std::nullopt;
    for (const int at : hyphenAt) {
        if (text[static_cast<std::size_t>(at)] != '-')
            return std::nullopt;
    }
    Uuid id;
    for (std::size_t i = 0; i < 16; ++i) {
        const auto at = static_cast<std::size_t>(digitAt[i]);
        const int high = digitValue(text[at]);
        const int low = digitValue(text[at + 1]);
        if ((high | low) < 0)
            return std::nullopt;
        id.bytes_[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return id;
}

std::string Uuid::text() const {
    std::string text(36, '-');
    for (std::size_t i = 0; i < 16; ++i) {
        const auto at = static_cast<std::size_t>(digitAt[i]);
        text[at] = digits[bytes_[i] >> 4];
        text[at + 1] = digits[bytes_[i] & 0x0F];
    }
    return text;
}

std::string freshId() {
    return Uuid::random().text();
}

}  // namespace tembrix

std::size_t std::hash<tembrix::Uuid>::operator()(const tembrix::Uuid& id) const noexcept {
    std::uint64_t halves[2];
    std::memcpy(halves, id.bytes().data(), 16);
    // Fixed ids such as that of the drawings line differ only in the last bytes, so both halves are
    // mixed.
    return static_cast<std::size_t>((halves[0] * 0x9E3779B97F4A7C15ull) ^ halves[1]);
}
