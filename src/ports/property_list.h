#pragma once

#include <map>
#include <string>

#include "base/bytes.h"
#include "base/result.h"

namespace tembrix {

// Raw data by key in the binary property list format. Errors: domain "propertyList".
class PropertyList {
  public:
    virtual ~PropertyList() = default;
    virtual Result<Bytes> encode(const std::map<std::string, Bytes>& values) const = 0;
    // Entries that are not data are left out.
    virtual Result<std::map<std::string, Bytes>> decode(BytesView file) const = 0;
};

}  // namespace tembrix
