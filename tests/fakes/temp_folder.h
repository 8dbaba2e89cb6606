#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <system_error>

#include "ports/directories.h"

namespace tembrix {

// An empty folder for a test. It is removed with its content at the end.
class TempFolder {
  public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tembrix-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a temporary folder");
        path_ = name;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

    // Writes a file below the folder and creates missing parent folders.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const {
        const auto file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

    // The user's folders inside this one.
    Directories directories() const {
        return {path_ / "Documents", path_ / "Application Support", path_ / "tmp"};
    }

  private:
    std::filesystem::path path_;
};

// The content of a file, empty if there is none.
inline std::string fileText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace tembrix
