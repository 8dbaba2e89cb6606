#pragma once

#include <vector>

#include "core/records/annotation_records.h"

namespace tembrix {

// Takes the tags of the active collection whenever they change: the hot keys.
class HotkeyRegistry {
  public:
    virtual ~HotkeyRegistry() = default;
    virtual void registerHotkeys(const std::vector<Tag>& tags, const TagCollection& collection) = 0;
};

}  // namespace tembrix
