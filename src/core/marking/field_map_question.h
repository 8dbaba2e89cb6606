#pragma once

#include <functional>

#include "base/bytes.h"
#include "base/geometry.h"

#include "core/records/annotation_records.h"

namespace tembrix {

// Asks for a place on the field map. The answer is a point in the range 0 to 1; closing the map
// gives none.
class FieldMapQuestion {
  public:
    virtual ~FieldMapQuestion() = default;
    // False where there is no map to ask on; a press then goes on without a place.
    virtual bool canAsk() const { return true; }
    virtual void openFieldMapSelection(const Tag& tag, const Bytes& imageBookmark,
                                       std::function<void(Point)> chosen) = 0;
};

}  // namespace tembrix
