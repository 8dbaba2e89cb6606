#pragma once

#include <filesystem>

namespace tembrix {

// The user's folders as the platform names them. Nothing here is made by naming it.
struct Directories {
    std::filesystem::path documents;           // the user's document folder
    std::filesystem::path applicationSupport;  // the user's data folder
    std::filesystem::path temporary;           // this program's temporary folder
};

}  // namespace tembrix
