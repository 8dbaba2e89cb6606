#pragma once

#include <cstdlib>

namespace tembrix {

// Whether the libraries that the program uses may print to the terminal. They are silent unless the
// environment variable TEMBRIX_LIBRARY_MESSAGES is set.
inline bool wantsLibraryMessages() {
    return std::getenv("TEMBRIX_LIBRARY_MESSAGES") != nullptr;
}

}  // namespace tembrix
