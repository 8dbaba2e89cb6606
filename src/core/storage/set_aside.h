#pragma once

#include <string>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/user_defaults.h"

namespace tembrix {

// Keeps a value that does not decode under "damaged_" and its key before a later save overwrites
// it, so that nothing the user made is ever thrown away unseen.
inline void setAside(UserDefaults& defaults, Log& log, const std::string& key, BytesView value) {
    defaults.setData("damaged_" + key, value);
    log.line("⚠️ Storage: Unreadable value of " + key + " set aside");
}

}  // namespace tembrix
