#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "core/settings/settings.h"

namespace tembrix {

// Every action of the program. A new one is a value here, a row of the table, its texts, and a
// binding where the action is carried out.
enum class Command {
    addVideo,
    openVideo,
    renameVideo,
    toggleFavorite,
    rebindVideo,
    deleteVideo,
    takeBackDeletion,
    showData,
    settings,
    closeProject,
    quit,
    undo,
    redo,
    removeStamp,
    editLabels,
    editTimeEvents,
    searchVideos,
    clearSearch,
    playPause,
    seekBackward3,
    seekForward3,
    seekBackward5,
    seekForward5,
    seekBackward10,
    seekForward10,
    slower,
    faster,
    normalSpeed,
    mute,
    louder,
    quieter,
    chooseLine,
    previousLine,
    nextLine,
    addLine,
    renameLine,
    deleteLine,
    standardMode,
    tagBasedMode,
    zoomIn,
    zoomOut,
    compactTags,
    exportTimeline,
    exportAll,
    exportDrawings,
    exportTags,
    exportLabels,
    exportEvents,
    nextWindow,
    previousWindow,
    openMenu,
    contextMenu,
    findCommand,
    showKeys,
    openGuide,
};

// The menus of the menu bar, in this order.
enum class CommandMenu { file, edit, playback, timelines, exports, window, help };

// The windows whose menu bars contain the command and in which its keys work.
enum class CommandScope { list, project, everywhere };

struct CommandRow {
    Command id;
    const char* name;     // identifies the command in stored settings; never changes
    const char* textKey;  // its name in menus, buttons and the search
    const char* helpKey;  // one sentence about what it does
    CommandMenu menu;
    CommandScope scope = CommandScope::project;
    // The default keys, in any form that canonicalHotkey() reads; null where there are fewer.
    std::array<const char*, 2> keys{};
    // A key that another part handles already, shown with the command but never looked up here.
    const char* fixedKey = nullptr;
    // The setting that its name contains, such as the seconds of a seek.
    double SettingsValues::*amount = nullptr;
    bool repeats = false;        // while its key is held down
    bool worksInSheets = false;  // also while a sheet or a panel is open
    bool startsGroup = false;    // the menu has a separator above it
};

// In the order of the menus and of the entries in each menu.
std::span<const CommandRow> commandTable();
const CommandRow& commandRow(Command id);
const CommandRow* findCommandRow(std::string_view name);

const char* menuTextKey(CommandMenu menu);

// Whether the command belongs to a window of the given scope, which is list or project.
bool isOffered(const CommandRow& row, CommandScope window);

}  // namespace tembrix
