#pragma once

#include <set>
#include <string>
#include <string_view>

namespace tembrix {

// Turns a text into a file name that exFAT, FAT32, NTFS and the file systems of Linux and macOS
// accept. Characters that one of them forbids become "-", dots and blanks at the end are removed,
// and names that Windows reserves for devices get a "_" in front. A name that is too long loses
// characters before its ending; the ending itself is never shortened.
std::string portableFileName(std::string_view text, std::string_view ending = {});

// Keeps the names of one folder apart, also where the file system ignores case.
class DistinctFileNames {
  public:
    // Returns the name, or the name with a number before its extension if it is already in use.
    std::string add(const std::string& name);

  private:
    std::set<std::string> used_;  // case-folded
};

}  // namespace tembrix
