#include "core/commands/commands.h"

#include <utility>

namespace tembrix {

Subscription Commands::bind(Command command, Action action) {
    const int id = ++lastId_;
    bindings_[command].push_back({id, std::move(action)});
    refresh();
    return Subscription([this, command, id] {
        std::erase_if(bindings_[command],
                      [id](const Binding& binding) { return binding.id == id; });
        refresh();
    });
}

const Commands::Action* Commands::actionOf(Command command) const {
    const auto found = bindings_.find(command);
    return found == bindings_.end() || found->second.empty() ? nullptr
                                                             : &found->second.back().action;
}

bool Commands::isEnabled(Command command) const {
    const Action* action = actionOf(command);
    return action && (!action->enabled || action->enabled());
}

std::optional<bool> Commands::isChecked(Command command) const {
    const Action* action = actionOf(command);
    return action && action->checked ? std::optional(action->checked()) : std::nullopt;
}

bool Commands::run(Command command) {
    if (!isEnabled(command))
        return false;
    // A copy: the action may end its own binding, as closing the project does.
    const auto run = actionOf(command)->run;
    run();
    return true;
}

}  // namespace tembrix
