#include "core/commands/command_keys.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "base/json.h"
#include "base/json_style.h"
#include "base/result.h"
#include "base/utf8_text.h"

#include "core/keyboard/hot_key_codes.h"
#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

// By the command's name: its keys, separated by blanks.
using StoredKeys = std::map<std::string, std::string>;

std::vector<std::string> defaultKeys(const CommandRow& row) {
    std::vector<std::string> keys;
    for (const char* key : row.keys)
        if (key)
            keys.push_back(canonicalHotkey(key));
    return keys;
}

std::vector<std::string> split(const std::string& keys) {
    std::istringstream text(keys);
    return {std::istream_iterator<std::string>(text), {}};
}

bool shareWindow(CommandScope a, CommandScope b) {
    return a == b || a == CommandScope::everywhere || b == CommandScope::everywhere;
}

}  // namespace

CommandKeys::CommandKeys(UserDefaults& defaults, Log& log) : defaults_(defaults), log_(log) {
    load();
}

void CommandKeys::load() {
    const auto data = defaults_.data(layout::commandKeysKey);
    if (!data)
        return;
    const auto stored = decodeJson<StoredKeys>(*data);
    if (!stored) {
        log_.line("⚠️ Commands: The stored keys cannot be read: " + stored.error().text);
        return;
    }
    for (const auto& [name, keys] : *stored)
        if (const CommandRow* row = findCommandRow(name))
            changed_[row->id] = split(keys);
}

void CommandKeys::store() {
    StoredKeys stored;
    for (const auto& [command, keys] : changed_)
        stored[commandRow(command).name] = joined(keys, " ");
    if (stored.empty())
        defaults_.remove(layout::commandKeysKey);
    else
        defaults_.setData(layout::commandKeysKey, *encodeJson(stored, JsonStyle::compact));
    changed.emit();
}

std::vector<std::string> CommandKeys::keys(Command command) const {
    const auto found = changed_.find(command);
    return found == changed_.end() ? defaultKeys(commandRow(command)) : found->second;
}

std::string CommandKeys::caption(Command command) const {
    if (const char* fixed = commandRow(command).fixedKey)
        return commandKeyCaption(fixed);
    const auto own = keys(command);
    return own.empty() ? std::string() : commandKeyCaption(own.front());
}

std::optional<Command> CommandKeys::commandFor(const std::string& key, CommandScope window) const {
    for (const CommandRow& row : commandTable()) {
        if (!isOffered(row, window))
            continue;
        const auto own = keys(row.id);
        if (std::find(own.begin(), own.end(), key) != own.end())
            return row.id;
    }
    return std::nullopt;
}

std::vector<Command> CommandKeys::conflicts(Command command, const std::string& key) const {
    const std::string wanted = canonicalHotkey(key);
    std::vector<Command> found;
    for (const CommandRow& row : commandTable()) {
        if (row.id == command || !shareWindow(row.scope, commandRow(command).scope))
            continue;
        auto own = keys(row.id);
        if (row.fixedKey)
            own.push_back(canonicalHotkey(row.fixedKey));
        if (std::find(own.begin(), own.end(), wanted) != own.end())
            found.push_back(row.id);
    }
    return found;
}

void CommandKeys::setKeys(Command command, const std::vector<std::string>& keys) {
    std::vector<std::string> canonical;
    for (const auto& key : keys)
        if (auto form = canonicalHotkey(key); !form.empty())
            canonical.push_back(std::move(form));
    if (canonical == defaultKeys(commandRow(command)))
        changed_.erase(command);
    else
        changed_[command] = std::move(canonical);
    store();
}

void CommandKeys::reset(Command command) {
    if (changed_.erase(command) > 0)
        store();
}

void CommandKeys::resetAll() {
    changed_.clear();
    store();
}

std::string commandKeyCaption(std::string_view stored) {
    // The symbol of Shift is for the small caps on tag buttons; menus spell the key out.
    std::string caption = hotkeyCaption(stored);
    constexpr std::string_view symbol = "⇧";
    if (const auto at = caption.find(symbol); at != std::string::npos)
        caption.replace(at, symbol.size(), "Shift+");
    return caption;
}

}  // namespace tembrix
