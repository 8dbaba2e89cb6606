#pragma once

#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "base/signal.h"

#include "core/commands/command_keys.h"
#include "core/commands/command_table.h"

namespace tembrix {

// What the commands do at the moment. Whoever can carry out a command binds it, for as long as it
// can: the open project binds undo, the control window binds zoom. Menus, buttons, keys, the
// search, the tour and the tests all run commands here. Main thread only.
class Commands {
  public:
    struct Action {
        std::function<void()> run;
        std::function<bool()> enabled = {};  // without a rule: always
        std::function<bool()> checked = {};  // for a command that is on or off
    };

    explicit Commands(CommandKeys& keys) : keys_(keys) {}

    CommandKeys& keys() const { return keys_; }

    // Binds the command until the subscription ends. The latest binding is the one in force.
    Subscription bind(Command command, Action action);

    bool isEnabled(Command command) const;
    std::optional<bool> isChecked(Command command) const;  // absent: neither on nor off
    // Carries the command out if it is enabled, and says whether it was.
    bool run(Command command);

    // Bindings, rules or keys changed: buttons look at their command again. Those who bind a
    // command call refresh() when what its rule depends on has changed.
    void refresh() const { changed.emit(); }
    Signal<> changed;

  private:
    struct Binding {
        int id;
        Action action;
    };
    const Action* actionOf(Command command) const;

    CommandKeys& keys_;
    std::map<Command, std::vector<Binding>> bindings_;
    int lastId_ = 0;
};

}  // namespace tembrix
