#pragma once

#include <functional>

#include "core/keyboard/hot_key_codes.h"

class QKeyEvent;

namespace tembrix {

using KeyTranslation = std::function<KeyPress(const QKeyEvent&)>;

class Commands;
class FocusStateManager;
class Panels;
class Scheduler;
class Settings;
class TagLibraryManager;
class Texts;

// What the settings window uses.
struct SettingsServices {
    const Texts& texts;
    Settings& settings;
    Commands& commands;
    const TagLibraryManager& tagLibrary;
    FocusStateManager& focus;
    Panels& panels;
    Scheduler& scheduler;
    // Converts a native key event to a key press of the key tables.
    KeyTranslation translate;
};

}  // namespace tembrix
