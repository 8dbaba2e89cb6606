#pragma once

namespace tembrix {

class Commands;
class EventBus;
struct ExportServices;
class FocusStateManager;
class HotKeyManager;
class MarkupModeStore;
class Panels;
class Scheduler;
class StorageHealth;
class TagLibraryManager;
class Texts;
class TimelineDataManager;
class TimelineHistory;
class UserDefaults;
class VideoPlayerManager;

// What the control window uses: the parts of the open project that it shows and edits, and the
// services that its model and its exports need.
struct ControlServices {
    TimelineDataManager& timeline;
    TimelineHistory& history;
    VideoPlayerManager& player;
    HotKeyManager& hotkeys;
    MarkupModeStore& markupModes;
    ExportServices& exports;
    TagLibraryManager& tagLibrary;
    FocusStateManager& focus;
    UserDefaults& defaults;
    StorageHealth& health;
    Scheduler& scheduler;
    EventBus& events;
    Commands& commands;
    Panels& panels;
    const Texts& texts;
};

}  // namespace tembrix
