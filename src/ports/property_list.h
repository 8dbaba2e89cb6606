#pragma once

#include <map>
#include <string>

#include "base/bytes.h"
#include "base/result.h"

namespace tembrix {

// Encodes and decodes binary property lists of data by key. Errors: domain "propertyList".
class PropertyList {
  public:
    virtual ~PropertyList() = default;
    virtual Result<Bytes> encode(const std::map<std::string, Bytes>& values) const = 0;
    // Entries of other types than data are ignored.
    virtual Result<std::map<std::string, Bytes>> decode(BytesView file) const = 0;
};

}  // namespace tembrix
