#pragma once

namespace tembrix {

class TimelineCanvas;

// Shows the canvas to screen readers as a list of lines, each a list of its stamps.
void installTimelineAccessibility();

// Notifies screen readers that the keyboard cursor has moved.
void announceTimelineCursor(TimelineCanvas& canvas);

}  // namespace tembrix
