#include "core/commands/key_conflicts.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

namespace {

std::string_view keyOf(std::string_view canonical) {
    const auto plus = canonical.rfind('+');
    return plus == canonical.npos ? canonical : canonical.substr(plus + 1);
}

bool isModifier(std::string_view key) {
    constexpr std::array<std::string_view, 5> names{"⌘", "⌥", "⌃", "⇧", "fn"};
    return std::find(names.begin(), names.end(), key) != names.end();
}

// The keys that focused controls and the timelines use: the space key and the arrows with all
// modifiers, Return, Tab and Escape by themselves.
bool belongsToControls(const std::string& canonical) {
    const auto is = [](std::string_view text, int code) {
        return text == "key-" + std::to_string(code);
    };
    const auto key = keyOf(canonical);
    for (const int code : {key::space, key::left, key::right, key::up, key::down})
        if (is(key, code))
            return true;
    constexpr std::string_view shift = "shift+";
    std::string_view plain = canonical;
    if (plain.starts_with(shift))
        plain.remove_prefix(shift.size());
    constexpr int enter = 76;
    for (const int code : {key::returnKey, enter, key::tab, key::escape})
        if (is(plain, code))
            return true;
    return false;
}

std::vector<HotKeyUse> hotkeyUses(const CollectionLists& collection, const std::string& canonical) {
    std::vector<HotKeyUse> uses;
    for (const Tag& tag : collection.tags) {
        if (canonicalHotkey(tag.hotkey.value_or("")) == canonical)
            uses.push_back({tag.name, {}});
        if (!tag.labelHotkeys)
            continue;
        for (const auto& [id, hotkey] : *tag.labelHotkeys) {
            if (canonicalHotkey(hotkey) != canonical)
                continue;
            const auto label = std::find_if(collection.labels.begin(), collection.labels.end(),
                                            [&](const Label& one) { return one.id == id; });
            uses.push_back({tag.name, label == collection.labels.end() ? id : label->name});
        }
    }
    // A tag's own key disturbs more than that of a label.
    std::stable_partition(uses.begin(), uses.end(),
                          [](const HotKeyUse& use) { return use.label.empty(); });
    return uses;
}

}  // namespace

KeyConflicts keyConflicts(const CommandKeys& keys, const CollectionLists& collection,
                          Command command, const std::string& key) {
    KeyConflicts found;
    const std::string canonical = canonicalHotkey(key);
    if (canonical.empty() || isModifier(keyOf(canonical))) {
        found.refusal = "keyNeedsAnotherKey";
        return found;
    }
    for (const Command other : keys.conflicts(command, key)) {
        const char* fixed = commandRow(other).fixedKey;
        const bool keeps = fixed && canonicalHotkey(fixed) == canonical;
        (keeps ? found.fixed : found.commands).push_back(other);
    }
    if (found.fixed.empty() && belongsToControls(canonical))
        found.refusal = "keyBelongsToControls";
    if (commandRow(command).scope != CommandScope::list)
        found.hotkeys = hotkeyUses(collection, canonical);
    return found;
}

}  // namespace tembrix
