#pragma once

#include "ports/user_defaults.h"

#include "core/notifications/event_bus.h"
#include "core/records/markup_mode.h"

namespace tembrix {

// Reads and writes the stored markup mode.
class MarkupModeStore {
  public:
    MarkupModeStore(UserDefaults& defaults, EventBus& events)
        : defaults_(defaults), events_(events) {}
    MarkupMode currentMarkupMode() const;
    void setMarkupMode(MarkupMode mode);  // stores it and posts markupModeChanged

  private:
    UserDefaults& defaults_;
    EventBus& events_;
};

}  // namespace tembrix
