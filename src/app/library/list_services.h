#pragma once

namespace tembrix {

class Commands;
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
    Commands& commands;
    Panels& panels;
    Scheduler& scheduler;
};

}  // namespace tembrix
