#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tembrix {

// Virtual key codes of the key tables. They identify keys by their place on the keyboard; adapters
// translate the native scan codes.
namespace key {
inline constexpr int z = 6, c = 8, v = 9, besideLeftShift = 10, returnKey = 36, tab = 48,
                     space = 49, deleteKey = 51, escape = 53, help = 114, left = 123, right = 124,
                     down = 125, up = 126;
}

// The modifiers of a key press. On Linux and Windows, Command is Ctrl and Control is the Meta key.
struct KeyModifiers {
    bool control = false;
    bool option = false;
    bool shift = false;
    bool command = false;
    bool function = false;
    bool operator==(const KeyModifiers&) const = default;
};

struct KeyPress {
    int code = -1;  // -1 for a key without a code, which is identified by its characters
    KeyModifiers modifiers;
    std::string characters;  // ignoring modifiers, UTF-8
    bool operator==(const KeyPress&) const = default;
};

// The lookup form of a press: the held modifiers in the order "ctrl+alt+shift+cmd+", then the key,
// e.g. "shift+a". Empty for a key without a code.
std::string keyString(const KeyPress& press);

// The press in terms of the keys of commands and of text fields, which go by what the keyboard
// layout prints on a key: if a key types what names another key of the tables, it counts as that
// one. A key that types nothing of the kind, such as a Russian letter, keeps its place.
KeyPress byLetter(const KeyPress& press);

// The form in which a hot key is recorded, e.g. "⌘+A". Empty if the press cannot be recorded.
std::string capturedForm(const KeyPress& press);
std::string capturedModifiers(const KeyModifiers& modifiers);

// Converts either form, in any case, to the lookup form.
std::string canonicalHotkey(std::string_view stored);

// The text of a stored hot key on a button, e.g. "⇧A".
std::string hotkeyCaption(std::string_view stored);

}  // namespace tembrix
