#pragma once

#include "ports/directories.h"

namespace tembrix {

// The user's folders as the XDG directories name them. The temporary folder stands in the user's
// cache: a film needs the room of a disk, and preview pictures last from one start to the next.
Directories qtDirectories();

// The program's own folders, where the values database and the keychain file stand.
std::filesystem::path programDataFolder();
std::filesystem::path programStateFolder();

}  // namespace tembrix
