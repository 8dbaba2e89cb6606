#pragma once

#include <span>

#include "base/geometry.h"

namespace tembrix {

// The windows beside the list window. A new window is one kind, one row of the table and one maker
// of its content.
enum class WindowKind { video, control, tagLibrary };

struct WindowRow {
    WindowKind kind;
    const char* titleKey;  // also the name by which tests and tools find the window
    // The frame of a new window on a screen of this frame. Null: the window has its own size.
    Rect (*frame)(const Rect& screen);
    bool opensWithProject;  // rows open in the order of the table
    bool belongsToProject;  // closes with the project
    bool closesProject;     // the project closes with the window
    bool single;            // at most one is open; opening it again shows that one
    bool takesTagKeys;      // the hot keys of tags work while it has the keyboard
    bool spaceAlwaysPlays;  // also while a text field or the drawing editor is in use
};

std::span<const WindowRow> windowTable();
const WindowRow& windowRow(WindowKind kind);

}  // namespace tembrix
