#pragma once

#include <algorithm>
#include <string>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/user_defaults.h"

#include "core/storage/data_layout.h"

namespace tembrix {

// Saves a value that cannot be decoded or that is replaced under its key with the prefix for
// damaged values, and with a number if that key is in use. So no data of the user is lost. Returns
// false if the value is there already.
inline bool setAside(UserDefaults& defaults, const std::string& key, BytesView value) {
    const std::string base = layout::damagedKey(key);
    std::string name = base;
    for (int number = 2; const auto present = defaults.data(name); ++number) {
        if (std::equal(present->begin(), present->end(), value.begin(), value.end()))
            return false;
        name = base + "_" + std::to_string(number);
    }
    defaults.setData(name, value);
    return true;
}

inline void setAside(UserDefaults& defaults, Log& log, const std::string& key, BytesView value) {
    if (setAside(defaults, key, value))
        log.line("⚠️ Storage: Unreadable value of " + key + " set aside");
}

}  // namespace tembrix
