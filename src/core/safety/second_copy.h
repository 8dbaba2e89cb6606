#pragma once

#include <filesystem>
#include <mutex>

#include "base/log.h"

#include "ports/property_list.h"
#include "ports/user_defaults.h"

namespace tembrix {

// A file with a second copy of the values that are needed at launch: the list of videos and the
// date of the last backup. If the database loses them, the defaults are not treated as lost. Any
// thread.
class SecondCopy {
  public:
    SecondCopy(std::filesystem::path file, UserDefaults& defaults, PropertyList& propertyLists,
               Log& log);

    // Writes the current values of the defaults.
    void write();
    // Restores values that are missing in the defaults or do not match their checksum. A damaged
    // value is set aside. Returns whether the list of videos was replaced.
    bool repairDefaults();

  private:
    const std::filesystem::path file_;
    UserDefaults& defaults_;
    PropertyList& propertyLists_;
    Log& log_;
    std::mutex writing_;  // held while the values are read and written
};

}  // namespace tembrix
