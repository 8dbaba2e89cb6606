#include "core/keyboard/hot_key_codes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "base/utf8_text.h"

namespace tembrix {

namespace {

struct KeyName {
    int code;
    std::string_view text;
};

// The key names in the lookup form; other keys are named by their number.
constexpr auto lookupKeys = std::to_array<KeyName>({
    {0, "a"},   {1, "s"},  {2, "d"},  {3, "f"},  {4, "h"},  {5, "g"},  {6, "z"},  {7, "x"},
    {8, "c"},   {9, "v"},  {11, "b"}, {12, "q"}, {13, "w"}, {14, "e"}, {15, "r"}, {16, "y"},
    {17, "t"},  {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"}, {22, "6"}, {23, "5"}, {24, "="},
    {25, "9"},  {26, "7"}, {27, "-"}, {28, "8"}, {29, "0"}, {30, "]"}, {31, "o"}, {32, "u"},
    {33, "["},  {34, "i"}, {35, "p"}, {37, "l"}, {38, "j"}, {39, "'"}, {40, "k"}, {41, ";"},
    {42, "\\"}, {43, ","}, {44, "/"}, {45, "n"}, {46, "m"}, {47, "."}, {50, "`"},
});

// The key names in the recorded form; other keys are named by the characters they type.
constexpr auto capturedKeys = std::to_array<KeyName>({
    {0, "A"},       {1, "S"},         {2, "D"},      {3, "F"},           {4, "H"},    {5, "G"},
    {6, "Z"},       {7, "X"},         {8, "C"},      {9, "V"},           {11, "B"},   {12, "Q"},
    {13, "W"},      {14, "E"},        {15, "R"},     {16, "Y"},          {17, "T"},   {18, "1"},
    {19, "2"},      {20, "3"},        {21, "4"},     {22, "6"},          {23, "5"},   {25, "9"},
    {26, "7"},      {28, "8"},        {29, "0"},     {31, "O"},          {32, "U"},   {34, "I"},
    {35, "P"},      {37, "L"},        {38, "J"},     {40, "K"},          {45, "N"},   {46, "M"},
    {36, "Return"}, {48, "Tab"},      {49, "Space"}, {51, "Delete"},     {53, "Esc"}, {114, "Help"},
    {115, "Home"},  {116, "Page Up"}, {119, "End"},  {121, "Page Down"}, {123, "←"},  {124, "→"},
    {125, "↓"},     {126, "↑"},       {122, "F1"},   {120, "F2"},        {99, "F3"},  {118, "F4"},
    {96, "F5"},     {97, "F6"},       {98, "F7"},    {100, "F8"},        {101, "F9"}, {109, "F10"},
    {103, "F11"},   {111, "F12"},
});

// Keys outside both tables that type no visible character: the typed text in recorded hot keys, and
// the name shown on a button.
struct UnprintableKey {
    int code;
    std::string_view typed;
    std::string_view name;
};
constexpr auto unprintableKeys = std::to_array<UnprintableKey>({
    {76, "\x03", "Enter"},
    {117, "\uF728", "Del"},
    {105, "\uF710", "F13"},
    {107, "\uF711", "F14"},
    {113, "\uF712", "F15"},
    {106, "\uF713", "F16"},
    {64, "\uF714", "F17"},
    {79, "\uF715", "F18"},
    {80, "\uF716", "F19"},
    {90, "\uF717", "F20"},
});

// The numeric keypad, with the names printed on it. Its characters belong to other keys.
constexpr auto keyPadKeys = std::to_array<KeyName>({
    {82, "Num 0"},
    {83, "Num 1"},
    {84, "Num 2"},
    {85, "Num 3"},
    {86, "Num 4"},
    {87, "Num 5"},
    {88, "Num 6"},
    {89, "Num 7"},
    {91, "Num 8"},
    {92, "Num 9"},
    {65, "Num ."},
    {67, "Num *"},
    {69, "Num +"},
    {75, "Num /"},
    {78, "Num -"},
    {81, "Num ="},
});

// Characters that keys outside the recorded table type with Shift or on a Russian layout, with the
// lookup name of the key.
struct Character {
    std::string_view typed;
    std::string_view key;
};
constexpr auto typedCharacters = std::to_array<Character>({
    {"+", "="},
    {"_", "-"},
    {"}", "]"},
    {"{", "["},
    {"\"", "'"},
    {":", ";"},
    {"|", "\\"},
    {"<", ","},
    {">", "."},
    {"?", "/"},
    {"~", "`"},
    {"ъ", "]"},
    {"х", "["},
    {"э", "'"},
    {"ж", ";"},
    {"б", ","},
    {"ю", "."},
    {"ё", "`"},
});

template <std::size_t size>
std::optional<std::string_view> textOf(const std::array<KeyName, size>& table, int code) {
    for (const auto& entry : table)
        if (entry.code == code)
            return entry.text;
    return std::nullopt;
}

std::string lookupKey(int code) {
    const auto text = textOf(lookupKeys, code);
    return text ? std::string(*text) : "key-" + std::to_string(code);
}

bool isLookupKey(std::string_view text) {
    return std::any_of(lookupKeys.begin(), lookupKeys.end(),
                       [&](const KeyName& entry) { return entry.text == text; });
}

// The lookup name of a key, from either form in lower case. Unknown names are returned unchanged.
std::string canonicalKey(const std::string& name) {
    if (isLookupKey(name))
        return name;
    for (const auto& entry : capturedKeys)
        if (lowerCased(entry.text) == name)
            return lookupKey(entry.code);
    for (const auto& entry : typedCharacters)
        if (entry.typed == name)
            return std::string(entry.key);
    for (const auto& entry : unprintableKeys)
        if (entry.typed == name)
            return lookupKey(entry.code);
    // "Key(10)": a key without characters.
    if (int code = 0; name.starts_with("key(") && name.ends_with(')') &&
                      std::from_chars(name.data() + 4, name.data() + name.size() - 1, code).ptr ==
                          name.data() + name.size() - 1)
        return code < 0 ? std::string() : lookupKey(code);
    return name;
}

struct ParsedHotkey {
    KeyModifiers modifiers;
    std::string key;  // in lookup form
};

ParsedHotkey parse(std::string_view stored) {
    ParsedHotkey parsed;
    auto text = lowerCased(stored);
    const auto take = [&](std::string_view name, bool KeyModifiers::*flag) {
        if (!text.starts_with(name) || text.size() <= name.size() || text[name.size()] != '+')
            return false;
        parsed.modifiers.*flag = true;
        text.erase(0, name.size() + 1);
        return true;
    };
    while (take("ctrl", &KeyModifiers::control) || take("⌃", &KeyModifiers::control) ||
           take("alt", &KeyModifiers::option) || take("⌥", &KeyModifiers::option) ||
           take("shift", &KeyModifiers::shift) || take("⇧", &KeyModifiers::shift) ||
           take("cmd", &KeyModifiers::command) || take("⌘", &KeyModifiers::command) ||
           take("fn", &KeyModifiers::function)) {
    }
    parsed.key = canonicalKey(text);
    return parsed;
}

// Fn only selects the function keys and is not part of the lookup form.
std::string lookupForm(const KeyModifiers& modifiers, const std::string& key) {
    std::string text;
    if (modifiers.control)
        text += "ctrl+";
    if (modifiers.option)
        text += "alt+";
    if (modifiers.shift)
        text += "shift+";
    if (modifiers.command)
        text += "cmd+";
    return text + key;
}

std::string numberedKey(int code) {
    return "Key(" + std::to_string(code) + ")";
}

// The name as printed on keyboards of the platform.
std::string printedKeyName(int code) {
#ifndef __APPLE__
    if (code == key::deleteKey)
        return "Backspace";
    if (code == key::help)
        return "Insert";
#endif
    if (const auto name = textOf(capturedKeys, code))
        return std::string(*name);
    for (const auto& entry : unprintableKeys)
        if (entry.code == code)
            return std::string(entry.name);
    if (const auto name = textOf(keyPadKeys, code))
        return std::string(*name);
    return "Key " + std::to_string(code);
}

std::string capturedKeyName(const KeyPress& press) {
    if (const auto name = textOf(capturedKeys, press.code))
        return std::string(*name);
    if (press.characters.empty())
        return numberedKey(press.code);
    if (press.characters == " ")
        return "Space";
    // On some layouts a key types the character that names another key. Then the key's own name is
    // recorded, so that the same key is found later.
    const auto typed = canonicalKey(lowerCased(press.characters));
    if (press.code >= 0 && isLookupKey(typed)) {
        const auto place = textOf(lookupKeys, press.code);
        if (place && typed != *place)
            return std::string(*place);
        if (!place)  // for example a digit of the numeric keypad, whose character names another key
            return numberedKey(press.code);
    }
    return upperCased(press.characters);
}

}  // namespace

std::string keyString(const KeyPress& press) {
    return press.code < 0 ? std::string() : lookupForm(press.modifiers, lookupKey(press.code));
}

KeyPress byLetter(const KeyPress& press) {
    KeyPress named = press;
    const auto typed = lowerCased(press.characters);
    // The keys beside those of the table type some of their characters too.
    if (!textOf(lookupKeys, press.code))
        return named;
    for (const auto& entry : lookupKeys)
        if (entry.text == typed)
            named.code = entry.code;
    return named;
}

std::string capturedModifiers(const KeyModifiers& modifiers) {
    std::vector<std::string> parts;
    if (modifiers.command)
        parts.emplace_back("⌘");
    if (modifiers.option)
        parts.emplace_back("⌥");
    if (modifiers.control)
        parts.emplace_back("⌃");
    if (modifiers.shift)
        parts.emplace_back("⇧");
    if (modifiers.function)
        parts.emplace_back("Fn");
    return joined(parts, "+");
}

std::string capturedForm(const KeyPress& press) {
    if (press.code < 0 && press.characters.empty())
        return {};
    const auto modifiers = capturedModifiers(press.modifiers);
    const auto key = capturedKeyName(press);
    return modifiers.empty() ? key : modifiers + "+" + key;
}

std::string canonicalHotkey(std::string_view stored) {
    const auto parsed = parse(stored);
    return parsed.key.empty() ? std::string{} : lookupForm(parsed.modifiers, parsed.key);
}

std::string hotkeyCaption(std::string_view stored) {
    auto [modifiers, key] = parse(stored);
    // The modifiers as printed on keyboards of the platform.
#ifdef __APPLE__
    constexpr std::string_view control = "⌃", option = "⌥", command = "⌘";
#else
    constexpr std::string_view control = "Meta+", option = "Alt+", command = "Ctrl+";
#endif
    // Modifiers only, without a key.
    for (const auto& [name, flag] :
         {std::pair("⌘", &KeyModifiers::command), std::pair("⌥", &KeyModifiers::option),
          std::pair("⌃", &KeyModifiers::control), std::pair("⇧", &KeyModifiers::shift)})
        if (key == name) {
            modifiers.*flag = true;
            key.clear();
        }
    std::string caption;
    if (modifiers.control)
        caption += control;
    if (modifiers.command)
        caption += command;
    if (modifiers.option)
        caption += option;
    if (modifiers.shift)
        caption += "⇧";
    if (key.empty() && caption.ends_with('+'))
        caption.pop_back();
    if (int code = 0;
        key.starts_with("key-") &&
        std::from_chars(key.data() + 4, key.data() + key.size(), code).ec == std::errc{})
        return caption + printedKeyName(code);
    return caption + upperCased(key);
}

}  // namespace tembrix
