#pragma once

#include <filesystem>
#include <mutex>

#include "base/log.h"

#include "ports/property_list.h"
#include "ports/user_defaults.h"

namespace tembrix {

// A file beside the user defaults with a second copy of the values by which a launch decides: the
// list of videos and the date of the last backup. A database that lost them then does not count as
// lost defaults. Any thread.
class SecondCopy {
  public:
    SecondCopy(std::filesystem::path file, UserDefaults& defaults, PropertyList& propertyLists,
               Log& log);

    // Writes the values that the defaults have now.
    void write();
    // Returns values to the defaults that are missing there or differ from their check. A damaged
    // value is set aside.
    void repairDefaults();

  private:
    const std::filesystem::path file_;
    UserDefaults& defaults_;
    PropertyList& propertyLists_;
    Log& log_;
    std::mutex writing_;  // the values are read and written by one thread at a time
};

}  // namespace tembrix
