#pragma once

#include <string>
#include <vector>

#include "core/commands/command_keys.h"
#include "core/commands/command_table.h"
#include "core/records/annotation_records.h"

namespace tembrix {

// A use of a key as a hot key of the active collection.
struct HotKeyUse {
    std::string tag;    // its name
    std::string label;  // the name of its label; empty if the key is the tag's own
    bool operator==(const HotKeyUse&) const = default;
};

// What stands against a key for a command.
struct KeyConflicts {
    // The text key of the reason why no command can have the key; null if one can.
    const char* refusal = nullptr;
    std::vector<Command> fixed;     // commands that keep it
    std::vector<Command> commands;  // commands that it can be taken from
    // Those of tags first. Hot keys go before commands in the windows of a match.
    std::vector<HotKeyUse> hotkeys;

    bool none() const { return !refusal && fixed.empty() && commands.empty() && hotkeys.empty(); }
    bool canBeTaken() const { return !refusal && fixed.empty(); }
};

// `key` may be in any stored form.
KeyConflicts keyConflicts(const CommandKeys& keys, const CollectionLists& collection,
                          Command command, const std::string& key);

}  // namespace tembrix
