#include "core/keyboard/key_capture.h"

#include <array>
#include <string_view>

namespace tembrix {

namespace {

constexpr double settleDelay = 0.05;   // seconds after a key
constexpr double modifierDelay = 0.1;  // seconds after released modifiers

// U+F700 to U+F703: the characters of the arrow keys.
constexpr std::array<std::string_view, 4> arrowCharacters{"\uF700", "\uF701", "\uF702", "\uF703"};

bool isArrow(const KeyPress& press) {
    for (const auto characters : arrowCharacters)
        if (press.characters == characters)
            return true;
    return false;
}

// Whether a modifier of `before` is no longer held.
bool released(const KeyModifiers& before, const KeyModifiers& now) {
    return (before.control && !now.control) || (before.option && !now.option) ||
           (before.shift && !now.shift) || (before.command && !now.command) ||
           (before.function && !now.function);
}

}  // namespace

void KeyCapture::start() {
    // The last capture may have ended while modifiers were held and timers were running.
    lastFlags_ = {};
    ends_.clear();
    isCapturing.set(true);
}

void KeyCapture::keyDown(const KeyPress& press) {
    if (!*isCapturing)
        return;
    lastFlags_ = press.modifiers;
    if (press.characters.empty() || isArrow(press))
        return;
    const auto recorded = capturedForm(press);
    if (recorded.empty())
        return;
    const auto old = *keyString;
    keyString.set(recorded);
    // Each key has its own timer, so that a second key pressed by accident right after the first
    // one is not recorded.
    ends_.push_back(scheduler_.after(settleDelay, [this, old, recorded] {
        if (*keyString && *keyString != recorded && !(*keyString)->empty())
            keyString.set(old);
        isCapturing.set(false);
    }));
}

void KeyCapture::modifiersChanged(const KeyModifiers& modifiers) {
    if (!*isCapturing)
        return;
    const auto before = lastFlags_;
    lastFlags_ = modifiers;
    const auto held = capturedModifiers(modifiers);
    if (!released(before, modifiers) || held.empty())
        return;
    keyString.set(held);
    ends_.push_back(scheduler_.after(modifierDelay, [this] { isCapturing.set(false); }));
}

void KeyCapture::focusLost() {
    if (*isCapturing)
        ends_.push_back(scheduler_.after(0, [this] { isCapturing.set(false); }));
}

}  // namespace tembrix
