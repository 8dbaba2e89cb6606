#pragma once

#include <string>

#include "base/uuid.h"

namespace tembrix {

// What the timelines need from the drawings, which belong to a higher folder.
class DrawingLinks {
  public:
    virtual ~DrawingLinks() = default;
    virtual void deleteDrawingFiles(const std::string& drawingName) = 0;
    virtual void checkLinksAfterResize(const Uuid& stampId, double start, double finish) = 0;
    // Whether the drawing's files exist, so that its stamp may be restored.
    virtual bool drawingExists(const std::string&) const { return false; }
};

}  // namespace tembrix
