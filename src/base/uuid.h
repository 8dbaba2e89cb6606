#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tembrix {

// An RFC 4122 identifier. Written in upper case, read in any case.
class Uuid {
  public:
    Uuid() = default;  // all zero

    static Uuid random();                                     // version 4
    static std::optional<Uuid> parse(std::string_view text);  // the canonical 36 characters only

    std::string text() const;

    auto operator<=>(const Uuid&) const = default;

    const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }

  private:
    std::array<std::uint8_t, 16> bytes_{};
};

// A new identifier as upper-case text, as most records store it.
std::string freshId();

}  // namespace tembrix

template <>
struct std::hash<tembrix::Uuid> {
    std::size_t operator()(const tembrix::Uuid& id) const noexcept;
};
