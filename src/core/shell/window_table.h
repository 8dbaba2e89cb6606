#pragma once

#include <span>

#include "base/geometry.h"

#include "core/commands/command_table.h"

namespace tembrix {

// The windows other than the list window. A new window needs a kind, a row in the table and a maker
// for its content.
enum class WindowKind { video, control, tagLibrary, settings };

struct WindowRow {
    WindowKind kind;
    const char* titleKey;                           // also the name that tests and tools use
    CommandScope commands = CommandScope::project;  // those that its menus and keys offer
    // Computes the initial frame from the frame of the screen. If null, the window chooses its
    // size.
    Rect (*frame)(const Rect& screen);
    bool opensWithProject;  // rows open in the order of the table
    bool belongsToProject;  // closes with the project
    bool closesProject;     // the project closes with the window
    bool single;            // opening it again shows the existing one
    bool takesTagKeys;      // the hot keys of tags work while it has the focus
    bool spaceAlwaysPlays;  // also while text or a drawing is edited
};

std::span<const WindowRow> windowTable();
const WindowRow& windowRow(WindowKind kind);

}  // namespace tembrix
