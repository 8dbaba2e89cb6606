#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/published.h"

#include "ports/scheduler.h"

#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

// Records one hot key; the logic of KeyCaptureView.
class KeyCapture {
  public:
    explicit KeyCapture(Scheduler& scheduler);

    Published<std::optional<std::string>> keyString;
    Published<bool> isCapturing{false};

    void keyDown(const KeyPress& press);
    void modifiersChanged(const KeyModifiers& modifiers);
    void focusLost();

  private:
    Scheduler& scheduler_;
    KeyModifiers lastFlags_;
    std::vector<std::unique_ptr<Timer>> ends_;  // one per recorded key, until the next capture
    Subscription capturing_;
};

}  // namespace tembrix
