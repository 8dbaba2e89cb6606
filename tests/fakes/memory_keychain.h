#pragma once

#include <functional>
#include <map>
#include <string>

#include "ports/keychain.h"

namespace tembrix {

class MemoryKeychain final : public Keychain {
  public:
    bool set(BytesView value, std::string_view account) override {
        if (broken)
            return false;
        items_.insert_or_assign(std::string(account), Bytes(value.begin(), value.end()));
        return true;
    }
    std::optional<Bytes> get(std::string_view account) const override {
        const auto found = items_.find(account);
        if (found == items_.end())
            return std::nullopt;
        return found->second;
    }

    bool broken = false;  // storing fails

  private:
    std::map<std::string, Bytes, std::less<>> items_;
};

}  // namespace tembrix
