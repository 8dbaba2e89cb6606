#pragma once

#include "base/published.h"

namespace tembrix {

// Whether a text field of the program has the keyboard focus.
class FocusStateManager {
  public:
    Published<bool, FocusStateManager> isAnyTextFieldFocused{false};

    // Called by the fields, each time the keyboard focus enters or leaves one.
    void setTextFieldFocused(bool focused) { isAnyTextFieldFocused.set(focused); }
};

}  // namespace tembrix
