#pragma once

namespace tembrix {

class FocusStateManager;
class Locale;
class Panels;
class Scheduler;
class Texts;

// What the list window uses besides its model and the backup.
struct ListServices {
    const Texts& texts;
    const Locale& locale;
    FocusStateManager& focus;
    Panels& panels;
    Scheduler& scheduler;
};

}  // namespace tembrix
