#pragma once

#include <functional>

#include "base/bytes.h"
#include "base/geometry.h"

#include "core/records/annotation_records.h"

namespace tembrix {

// Asks for a position on the field map. The answer is a point with coordinates from 0 to 1. If the
// user closes the map, there is no answer.
class FieldMapQuestion {
  public:
    virtual ~FieldMapQuestion() = default;
    // Returns false if there is no map; marking then continues without a position.
    virtual bool canAsk() const { return true; }
    virtual void openFieldMapSelection(const Tag& tag, const Bytes& imageBookmark,
                                       std::function<void(Point)> chosen) = 0;
};

}  // namespace tembrix
