#include "core/commands/key_router.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "core/keyboard/hot_key_manager.h"

namespace tembrix {

namespace {

// On a sheet the space key and the shifted arrows belong to the focused control: they check a box
// or extend a selection. While labels are chosen they belong to the player, because the user wants
// to look at the moment again; Ctrl+Space checks a label there.
bool belongsToSheet(const KeyPress& press, bool choosesLabels) {
    const bool space = press.code == key::space && !(choosesLabels && !press.modifiers.command);
    const bool arrow = press.code == key::left || press.code == key::right;
    const bool seek = press.modifiers.shift && arrow && !choosesLabels;
    return space || seek;
}

// The editing keys of text fields that have Ctrl held.
constexpr auto editingKeys = std::to_array<std::string_view>(
    {"cmd+a", "cmd+c", "cmd+v", "cmd+x", "cmd+z", "shift+cmd+z", "cmd+y"});

bool isFunctionKey(int code) {
    constexpr std::array codes{122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111};
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

bool movesOrDeletes(int code) {
    constexpr std::array codes{key::left, key::right, key::up, key::down,      115,      116,
                               119,       121,        117,     key::deleteKey, key::help};
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

}  // namespace

bool isTextKey(const KeyPress& press) {
    if (isFunctionKey(press.code))
        return false;
    if (movesOrDeletes(press.code) || (!press.modifiers.command && !press.modifiers.control))
        return true;
    const auto text = keyString(press);
    return std::find(editingKeys.begin(), editingKeys.end(), text) != editingKeys.end();
}

KeyRouter::Decision KeyRouter::decide(const KeyPress& press, const KeySituation& at) const {
    if (at.menuOpen || at.records)
        return {};
    HotKeyManager* hotkeys = hotkeys_();
    const bool sheet = at.sheet != KeySituation::Sheet::none;
    if (!(sheet && belongsToSheet(press, hotkeys && *hotkeys->isLabelHotkeyMode)) && hotkeys &&
        hotkeys->takes(press))
        return {Meaning::hotKey, {}};
    const KeyPress named = byLetter(press);
    if (at.textField && isTextKey(named))
        return {};
    // Where the player does not take it, a focused button does not get it either.
    if (press.code == key::space && at.window == CommandScope::project && !sheet)
        return {Meaning::nothing, {}};
    // Windows without a scope have the commands of all windows, such as quitting.
    const auto command =
        commands_.keys().commandFor(keyString(named), at.window.value_or(CommandScope::everywhere));
    if (!command || !commands_.isEnabled(*command))
        return {};
    const CommandRow& row = commandRow(*command);
    if (!row.worksInSheets && (sheet || !at.window))
        return {};
    return {at.repeated && !row.repeats ? Meaning::nothing : Meaning::command, command};
}

bool KeyRouter::handle(const KeyPress& press, const KeySituation& situation) {
    const Decision decision = decide(press, situation);
    switch (decision.meaning) {
        case Meaning::view:
            return false;
        case Meaning::hotKey:
            return hotkeys_()->handleKeyDown(press);
        case Meaning::command:
            commands_.run(*decision.command);
            return true;
        case Meaning::nothing:
            return true;
    }
    return false;
}

}  // namespace tembrix
