#pragma once

#include <functional>
#include <optional>

#include "core/commands/command_table.h"
#include "core/commands/commands.h"
#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

class HotKeyManager;

// Where a key is pressed.
struct KeySituation {
    enum class Sheet { none, message, other };

    // The kind of the window that has the keyboard, itself or through a sheet on it; absent for
    // windows with neither menus nor commands.
    std::optional<CommandScope> window;
    Sheet sheet = Sheet::none;  // a message leaves the hot keys of its window working
    bool menuOpen = false;      // or another popup
    bool textField = false;
    bool repeated = false;  // the key is held down
    bool records = false;   // a field waits for the key that the user wants to assign
};

// The one place that decides what a key press does. First come menus, sheets and text fields, which
// keep the keys that they use; then the hot keys with their rules (HotKeyManager); then the keys of
// the commands. Hot keys go by the place of a key, the others by its letter (byLetter). What
// remains belongs to the focused control. Main thread only.
class KeyRouter {
  public:
    enum class Meaning { view, hotKey, command, nothing };
    struct Decision {
        Meaning meaning = Meaning::view;
        std::optional<Command> command;
    };

    // `hotkeys` returns those of the open project, null without one.
    KeyRouter(Commands& commands, std::function<HotKeyManager*()> hotkeys)
        : commands_(commands), hotkeys_(std::move(hotkeys)) {}

    Decision decide(const KeyPress& press, const KeySituation& situation) const;
    // Does what decide() says. False leaves the press to the view.
    bool handle(const KeyPress& press, const KeySituation& situation);

  private:
    Commands& commands_;
    std::function<HotKeyManager*()> hotkeys_;
};

// Whether a text field uses the press, by its letter, for typing or editing.
bool isTextKey(const KeyPress& press);

}  // namespace tembrix
