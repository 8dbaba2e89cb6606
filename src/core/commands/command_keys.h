#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/signal.h"

#include "ports/user_defaults.h"

#include "core/commands/command_table.h"

namespace tembrix {

// The keys of the commands: the defaults of the table and what the user changed, which is stored in
// the user defaults. Keys are in the form in which hot keys are looked up, such as "shift+cmd+z",
// and are those of byLetter().
// Main thread only.
class CommandKeys {
  public:
    CommandKeys(UserDefaults& defaults, Log& log);

    std::vector<std::string> keys(Command command) const;
    bool isChanged(Command command) const { return changed_.contains(command); }
    // How the command's key is shown, such as "Ctrl+Shift+Z"; empty for a command without one.
    std::string caption(Command command) const;

    // The command of this key in a window of the given scope.
    std::optional<Command> commandFor(const std::string& key, CommandScope window) const;
    // Other commands with this key in at least one of the windows of `command`.
    std::vector<Command> conflicts(Command command, const std::string& key) const;

    // Stored forms of any kind are accepted. An empty list leaves the command without a key.
    void setKeys(Command command, const std::vector<std::string>& keys);
    void reset(Command command);
    void resetAll();
    Signal<> changed;

  private:
    void load();
    void store();

    UserDefaults& defaults_;
    Log& log_;
    std::map<Command, std::vector<std::string>> changed_;
};

// "Ctrl+Shift+Z" for a stored key of any form.
std::string commandKeyCaption(std::string_view stored);

}  // namespace tembrix
