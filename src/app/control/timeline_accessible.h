#pragma once

namespace tembrix {

class TimelineCanvas;

// Shows the canvas to screen readers as a list of lines, each a list of its stamps.
void installTimelineAccessibility();

// Tells screen readers where the keyboard stands.
void announceTimelineCursor(TimelineCanvas& canvas);

}  // namespace tembrix
