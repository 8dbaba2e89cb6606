#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/signal.h"

#include "ports/texts.h"

#include "core/commands/command_keys.h"
#include "core/commands/command_table.h"
#include "core/settings/settings.h"

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

    Commands(CommandKeys& keys, const Settings& settings);

    CommandKeys& keys() const { return keys_; }

    // The name in menus, buttons and the search.
    std::string name(Command command, const Texts& texts) const;
    // The number in its name, such as the seconds of a seek.
    std::optional<double> amount(Command command) const;

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
    // Keys or numbers in names changed.
    Signal<> captionsChanged;

  private:
    struct Binding {
        int id;
        Action action;
    };
    const Action* actionOf(Command command) const;

    CommandKeys& keys_;
    const Settings& settings_;
    std::map<Command, std::vector<Binding>> bindings_;
    int lastId_ = 0;
    std::vector<double> shownAmounts_;
    Subscription keysChanged_;
    Subscription settingsChanged_;
};

}  // namespace tembrix
