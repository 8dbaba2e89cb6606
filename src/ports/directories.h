#pragma once

#include <filesystem>

namespace tembrix {

// The user's folders as defined by the platform. They may not exist yet.
struct Directories {
    std::filesystem::path documents;           // the user's document folder
    std::filesystem::path applicationSupport;  // the user's data folder
    std::filesystem::path temporary;           // this program's temporary folder
};

}  // namespace tembrix
