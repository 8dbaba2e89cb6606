#pragma once

#include <functional>

class QWidget;

namespace tembrix {

class EventBus;
struct ExportServices;
struct FocusStateManager;
class HotKeyManager;
class ImageCodec;
class Locale;
class MarkupModeStore;
class Panels;
class Scheduler;
class TagLibraryManager;
class Texts;
class TimelineDataManager;
class TimelineHistory;
class VideoPlayerManager;
struct CollectionServices;

// Makes the surface on which the open video shows. It follows the player manager: a new player
// shows by itself, and without one the surface is black.
using VideoSurfaceFactory = std::function<QWidget*(QWidget* parent)>;

// What the windows work with: references to the services of the composition root, handed to each
// window.
struct AppServices {
    Scheduler& scheduler;
    EventBus& events;
    const Texts& texts;
    const Locale& locale;
    Panels& panels;
    ImageCodec& images;
    TimelineDataManager& timeline;
    TimelineHistory& history;
    TagLibraryManager& tagLibrary;
    MarkupModeStore& markupModes;
    VideoPlayerManager& player;
    HotKeyManager& hotkeys;
    FocusStateManager& focus;
    CollectionServices& collections;
    ExportServices& exports;
    VideoSurfaceFactory makeVideoSurface;
};

}  // namespace tembrix
