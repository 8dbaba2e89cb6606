#pragma once

namespace tembrix {

class Commands;
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
    Commands& commands;
    Panels& panels;
    const Texts& texts;
};

}  // namespace tembrix
