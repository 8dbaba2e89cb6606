#include "base/log.h"

#include <cstdio>

namespace tembrix {

void StandardLog::line(std::string_view text) {
    const std::lock_guard lock(mutex_);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

}  // namespace tembrix
