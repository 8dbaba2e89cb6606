#pragma once

#include <vector>

#include "core/records/annotation_records.h"

namespace tembrix {

// What the storage needs of the collection index, which belongs to a higher folder.
class CollectionIndexStorage {
  public:
    virtual ~CollectionIndexStorage() = default;
    virtual std::vector<CollectionInfo> collections() = 0;  // any thread
    virtual void saveNow() = 0;  // writes a pending change in the background
};

}  // namespace tembrix
