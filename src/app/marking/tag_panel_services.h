#pragma once

namespace tembrix {

class Commands;
class EventBus;
class HotKeyManager;
class Panels;
class Settings;
class TagLibraryManager;
class Texts;
class TimelineDataManager;
class VideoPlayerManager;

// What the tag panel uses.
struct TagPanelServices {
    TimelineDataManager& timeline;
    TagLibraryManager& tagLibrary;
    VideoPlayerManager& player;
    HotKeyManager& hotkeys;
    EventBus& events;
    Commands& commands;
    Settings& settings;
    Panels& panels;
    const Texts& texts;
};

}  // namespace tembrix
