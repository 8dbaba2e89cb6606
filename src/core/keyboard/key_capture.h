#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/published.h"

#include "ports/scheduler.h"

#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

// Records one hot key; the logic of KeyCaptureView.
class KeyCapture {
  public:
    explicit KeyCapture(Scheduler& scheduler) : scheduler_(scheduler) {}

    Published<std::optional<std::string>, KeyCapture> keyString;
    Published<bool, KeyCapture> isCapturing{false};

    // The hot key that is shown before a capture, or that another control has recorded.
    void setKeyString(std::optional<std::string> key) { keyString.set(std::move(key)); }
    void start();

    void keyDown(const KeyPress& press);
    void modifiersChanged(const KeyModifiers& modifiers);
    void focusLost();

  private:
    Scheduler& scheduler_;
    KeyModifiers lastFlags_;
    std::vector<std::unique_ptr<Timer>> ends_;  // one per recorded key, until the next capture
};

}  // namespace tembrix
