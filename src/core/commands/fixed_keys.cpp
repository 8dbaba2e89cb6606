#include "core/commands/fixed_keys.h"

#include <array>

namespace tembrix {

namespace {

constexpr auto table = std::to_array<FixedKey>({
    {CommandScope::project, "↑ ↓ ← →", "keysWalkStamps"},
    {CommandScope::project, "Return", "keysSelectStamp"},
    {CommandScope::project, "Alt+←, Alt+→", "keysMoveStart"},
    {CommandScope::project, "Ctrl+←, Ctrl+→", "keysMoveEnd"},
    {CommandScope::project, "Alt+↑, Alt+↓", "keysMoveToLine"},
    {CommandScope::project, "Esc", "keysCancelGesture"},
    {CommandScope::everywhere, "Tab, Shift+Tab", "keysNextControl"},
});

}  // namespace

std::span<const FixedKey> fixedKeys() {
    return table;
}

}  // namespace tembrix
