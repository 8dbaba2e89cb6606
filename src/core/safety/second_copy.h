#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/log.h"

#include "ports/property_list.h"
#include "ports/user_defaults.h"

namespace tembrix {

// A file with a second copy of the values that are needed at launch: the list of videos, the date
// of the last backup and the collection index as last written, each with its change number. If the
// database loses them, the defaults are not treated as lost; if it loses its latest changes, older
// values do not replace newer ones. Any thread.
class SecondCopy {
  public:
    struct Repair {
        bool listReplaced = false;  // the list of videos was damaged or lost
        bool listWasLost = false;   // there was none
        bool lostChanges = false;   // the defaults had older values than the copy
        bool indexIsOlder = false;  // than its last write: the stored unsaved change
    };

    SecondCopy(std::filesystem::path file, UserDefaults& defaults, PropertyList& propertyLists,
               Log& log);

    // Writes the current values of the defaults, unless some of them are not stored yet.
    void write();
    // Restores values that are missing or older in the defaults or do not match their checksum. A
    // value that is replaced is set aside.
    Repair repairDefaults();

  private:
    // The values in the file; absent if it cannot be read.
    std::optional<std::map<std::string, Bytes>> read() const;
    bool repairVideoList(const Bytes& list, bool isNewer);

    const std::filesystem::path file_;
    UserDefaults& defaults_;
    PropertyList& propertyLists_;
    Log& log_;
    std::mutex writing_;  // held while the values are read and written
};

}  // namespace tembrix
