#pragma once

#include <string>

#include "base/uuid.h"

namespace tembrix {

// What the store asks of the drawings, which stand above it.
class DrawingLinks {
  public:
    virtual ~DrawingLinks() = default;
    virtual void deleteDrawingFiles(const std::string& drawingName) = 0;
    virtual void checkLinksAfterResize(const Uuid& stampId, double start, double finish) = 0;
    // Whether the drawing's files are there, so that a stamp of it may come back.
    virtual bool drawingExists(const std::string&) const { return false; }
};

}  // namespace tembrix
