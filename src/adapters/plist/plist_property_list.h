#pragma once

#include "base/bytes.h"

#include "ports/property_list.h"

namespace tembrix {

// Property lists, read and written by libplist.
class PlistPropertyList final : public PropertyList {
  public:
    Result<Bytes> encode(const std::map<std::string, Bytes>& values) const override;
    Result<std::map<std::string, Bytes>> decode(BytesView file) const override;
};

}  // namespace tembrix
