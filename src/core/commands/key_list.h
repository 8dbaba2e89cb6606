#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ports/texts.h"

#include "core/commands/command_table.h"
#include "core/commands/commands.h"

namespace tembrix {

// One line of the list of keys.
struct KeyLine {
    std::string keys;  // "Ctrl+Shift+Z, Ctrl+Y"
    std::string text;
    bool operator==(const KeyLine&) const = default;
};
struct KeySection {
    std::string title;
    std::vector<KeyLine> lines;
};

// All keys of a window of the given scope, or of the whole program: commands by menu, then the keys
// of its controls.
std::vector<KeySection> keySections(const Commands& commands, const Texts& texts,
                                    std::optional<CommandScope> window = {});

}  // namespace tembrix
