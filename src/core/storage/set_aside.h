#pragma once

#include <algorithm>
#include <string>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/user_defaults.h"

#include "core/storage/data_layout.h"

namespace tembrix {

// Keeps a value that does not decode under its key with the prefix of damaged values, and with a
// number if that is in use already, before a later save overwrites it: nothing the user made is
// thrown away unseen.
inline void setAside(UserDefaults& defaults, Log& log, const std::string& key, BytesView value) {
    const std::string base = layout::damagedKey(key);
    std::string name = base;
    for (int number = 2; const auto present = defaults.data(name); ++number) {
        if (std::equal(present->begin(), present->end(), value.begin(), value.end()))
            return;
        name = base + "_" + std::to_string(number);
    }
    defaults.setData(name, value);
    log.line("⚠️ Storage: Unreadable value of " + key + " set aside");
}

}  // namespace tembrix
