#include "core/commands/commands.h"

#include <utility>

namespace tembrix {

namespace {

std::vector<double> amounts(const SettingsValues& values) {
    std::vector<double> all;
    for (const CommandRow& row : commandTable())
        if (row.amount)
            all.push_back(values.*row.amount);
    return all;
}

}  // namespace

Commands::Commands(CommandKeys& keys, const Settings& settings)
    : keys_(keys), settings_(settings), shownAmounts_(amounts(*settings.values)) {
    keysChanged_ = keys.changed.observe([this] { captionsChanged.emit(); });
    settingsChanged_ = settings.values.observe([this](const SettingsValues& values) {
        auto now = amounts(values);
        if (std::exchange(shownAmounts_, std::move(now)) != shownAmounts_)
            captionsChanged.emit();
    });
}

std::string Commands::name(Command command, const Texts& texts) const {
    const char* key = commandRow(command).textKey;
    const auto number = amount(command);
    return number ? texts.format(key, {numberText(*number, texts)}) : texts.text(key);
}

std::optional<double> Commands::amount(Command command) const {
    const auto member = commandRow(command).amount;
    return member ? std::optional((*settings_.values).*member) : std::nullopt;
}

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
