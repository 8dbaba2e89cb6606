#pragma once

namespace tembrix {

class EventBus;
struct ExportServices;
class FocusStateManager;
class Panels;
class TagLibraryManager;
class Texts;
class TimelineDataManager;

// What the exports of a window use.
struct ExportWindowServices {
    TimelineDataManager& timeline;
    TagLibraryManager& tagLibrary;
    ExportServices& exports;
    FocusStateManager& focus;
    EventBus& events;
    Panels& panels;
    const Texts& texts;
};

}  // namespace tembrix
