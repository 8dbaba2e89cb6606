#pragma once

#include <string>

#include "base/uuid.h"

namespace tembrix {

// The functions of the drawings, which belong to a higher folder, that the timelines use.
class DrawingLinks {
  public:
    virtual ~DrawingLinks() = default;
    virtual void deleteDrawingFiles(const std::string& drawingName) = 0;
    virtual void checkLinksAfterResize(const Uuid& stampId, double start, double finish) = 0;
};

}  // namespace tembrix
