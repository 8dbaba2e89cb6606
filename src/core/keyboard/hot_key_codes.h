#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tembrix {

// Keys by their place on the keyboard, in the virtual key codes of the key tables. Adapters
// translate the native scan codes into them.
namespace key {
inline constexpr int z = 6, c = 8, v = 9, besideLeftShift = 10, returnKey = 36, tab = 48,
                     space = 49, deleteKey = 51, escape = 53, help = 114, left = 123, right = 124,
                     down = 125, up = 126;
}

// Modifiers of a key press. On Linux and Windows Command is Ctrl, and Control is the Meta key.
struct KeyModifiers {
    bool control = false;
    bool option = false;
    bool shift = false;
    bool command = false;
    bool function = false;
    bool operator==(const KeyModifiers&) const = default;
};

struct KeyPress {
    int code = -1;  // -1 for a key outside every table
    KeyModifiers modifiers;
    std::string characters;  // ignoring modifiers, UTF-8
    bool operator==(const KeyPress&) const = default;
};

// The form in which a live press is looked up: "ctrl+alt+shift+cmd+" as held, then the key, e.g.
// "shift+a".
std::string keyString(const KeyPress& press);

// The form in which a hot key is recorded, e.g. "⌘+A"; empty if there is nothing to record.
std::string capturedForm(const KeyPress& press);
std::string capturedModifiers(const KeyModifiers& modifiers);

// Either form, whatever its case, as the lookup form; so a captured hot key with modifiers or a
// named key reaches the lookup.
std::string canonicalHotkey(std::string_view stored);

// How a stored hot key is shown on a button: "⇧A".
std::string hotkeyCaption(std::string_view stored);

}  // namespace tembrix
