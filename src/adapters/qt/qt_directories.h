#pragma once

#include "ports/directories.h"

namespace tembrix {

// The user's folders according to the XDG specification. The temporary folder is in the user's
// cache: a film needs disk space, and preview pictures are kept between starts.
Directories qtDirectories();

// The program's own folders, for the values database and the keychain file.
std::filesystem::path programDataFolder();
std::filesystem::path programStateFolder();

}  // namespace tembrix
