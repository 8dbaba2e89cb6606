#pragma once

namespace tembrix {

class EventBus;
class HotKeyManager;
class Panels;
class TagLibraryManager;
class Texts;
class VideoPlayerManager;

// What the tag panel uses.
struct TagPanelServices {
    TagLibraryManager& tagLibrary;
    VideoPlayerManager& player;
    HotKeyManager& hotkeys;
    EventBus& events;
    Panels& panels;
    const Texts& texts;
};

}  // namespace tembrix
