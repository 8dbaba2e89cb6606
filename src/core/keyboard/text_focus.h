#pragma once

#include "base/published.h"

namespace tembrix {

// True while a text field of the program has the keyboard focus.
struct FocusStateManager {
    Published<bool> isAnyTextFieldFocused{false};
};

}  // namespace tembrix
