#pragma once

#include <cstddef>
#include <optional>

#include "base/uuid.h"

namespace tembrix {

class TimelineCanvas;

// Shows the canvas to screen readers as a list of lines, each a list of its stamps.
void installTimelineAccessibility();

// Notifies screen readers that the keyboard cursor has moved.
void announceTimelineCursor(TimelineCanvas& canvas);
// Notifies them that another line or stamp is selected.
void announceTimelineSelection(TimelineCanvas& canvas, const std::optional<Uuid>& before,
                               const std::optional<Uuid>& now);
// Notifies them that the stamps of a line have changed.
void announceTimelineRow(TimelineCanvas& canvas, std::size_t row);

}  // namespace tembrix
