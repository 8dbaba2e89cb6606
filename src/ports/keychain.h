#pragma once

#include <optional>
#include <string_view>

#include "base/bytes.h"

namespace tembrix {

// Stores bytes by account, separate from the rest of the user's data so that they survive its loss.
class Keychain {
  public:
    virtual ~Keychain() = default;
    virtual bool set(BytesView value, std::string_view account) = 0;  // replaces; true if stored
    virtual std::optional<Bytes> get(std::string_view account) const = 0;
};

}  // namespace tembrix
