#pragma once

#include <set>
#include <string>
#include <string_view>

namespace tembrix {

// Converts a text to a file name that is valid on exFAT, FAT32, NTFS and the file systems of Linux
// and macOS. Forbidden characters are replaced by "-", trailing dots and blanks are removed, and
// names reserved by Windows get the prefix "_". A name that is too long is shortened before its
// ending, which is never shortened itself.
std::string portableFileName(std::string_view text, std::string_view ending = {});

// Makes the file names in one folder distinct, also if the file system ignores case.
class DistinctFileNames {
  public:
    // Returns the name, with a number before its extension if it is already in use.
    std::string add(const std::string& name);

  private:
    std::set<std::string> used_;  // case-folded
};

}  // namespace tembrix
