#pragma once

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

#include "fakes/temp_folder.h"

namespace tembrix {

// Milliseconds of a steady clock.
inline double nowMs() {
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// The resident memory of the process.
inline double residentMegabytes() {
    std::ifstream pages("/proc/self/statm");
    long total = 0;
    long resident = 0;
    pages >> total >> resident;
    return static_cast<double>(resident * ::sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

// Uses separate user folders, so that no other library has an influence.
inline void settleIn(const TempFolder& home) {
    const std::string path = home.path().string();
    ::setenv("HOME", path.c_str(), 1);
    for (const char* kind : {"DATA", "CONFIG", "CACHE", "STATE"}) {
        const std::string name = std::string("XDG_") + kind + "_HOME";
        ::setenv(name.c_str(), (path + "/" + kind).c_str(), 1);
    }
}

}  // namespace tembrix
