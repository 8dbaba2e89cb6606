#pragma once

#include <vector>

#include "core/records/annotation_records.h"

namespace tembrix {

// Receives the tags of the active collection, with their hot keys, whenever they change.
class HotkeyRegistry {
  public:
    virtual ~HotkeyRegistry() = default;
    virtual void registerHotkeys(const std::vector<Tag>& tags, const TagCollection& collection) = 0;
};

}  // namespace tembrix
