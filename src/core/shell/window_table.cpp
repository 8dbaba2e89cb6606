#include "core/shell/window_table.h"

#include <algorithm>
#include <array>

namespace tembrix {

namespace {

// The control window takes the lower 40 percent of the screen. Above it, the tag panel takes the
// left third and the video the other two thirds. The top 40 points remain free.
constexpr double controlShare = 0.4;
constexpr double topMargin = 40;

Rect controlFrame(const Rect& screen) {
    const double height = controlShare * screen.height;
    return {screen.x, screen.bottom() - height, screen.width, height};
}
Rect tagLibraryFrame(const Rect& screen) {
    return {screen.x, screen.y + topMargin, screen.width / 3,
            screen.height - controlShare * screen.height - topMargin};
}
Rect videoFrame(const Rect& screen) {
    const Rect left = tagLibraryFrame(screen);
    return {left.right(), left.y, 2 * left.width, left.height};
}

// In the middle of the screen, as large as its pages need if there is room.
Rect settingsFrame(const Rect& screen) {
    const double width = std::min(920.0, screen.width), height = std::min(680.0, screen.height);
    return {screen.x + (screen.width - width) / 2, screen.y + (screen.height - height) / 2, width,
            height};
}

constexpr std::array<WindowRow, 4> table{{
    {.kind = WindowKind::video,
     .titleKey = "video",
     .frame = &videoFrame,
     .opensWithProject = true,
     .belongsToProject = true,
     .closesProject = true,
     .single = true,
     .takesTagKeys = true,
     .spaceAlwaysPlays = false},
    {.kind = WindowKind::control,
     .titleKey = "timelines",
     .frame = &controlFrame,
     .opensWithProject = true,
     .belongsToProject = true,
     .closesProject = true,
     .single = true,
     .takesTagKeys = true,
     .spaceAlwaysPlays = true},
    {.kind = WindowKind::tagLibrary,
     .titleKey = "tagLibrary",
     .frame = &tagLibraryFrame,
     .opensWithProject = true,
     .belongsToProject = true,
     .closesProject = true,
     .single = true,
     .takesTagKeys = true,
     .spaceAlwaysPlays = true},
    {.kind = WindowKind::settings,
     .titleKey = "settings",
     .commands = CommandScope::everywhere,
     .frame = &settingsFrame,
     .opensWithProject = false,
     .belongsToProject = false,
     .closesProject = false,
     .single = true,
     .takesTagKeys = false,
     .spaceAlwaysPlays = false},
}};

}  // namespace

std::span<const WindowRow> windowTable() {
    return table;
}

const WindowRow& windowRow(WindowKind kind) {
    return *std::find_if(table.begin(), table.end(),
                         [kind](const WindowRow& row) { return row.kind == kind; });
}

}  // namespace tembrix
