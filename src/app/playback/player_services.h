#pragma once

#include <functional>

class QWidget;

namespace tembrix {

class Commands;
class Settings;
class Texts;
class VideoPlayerManager;

// Creates the widget that shows the open video.
using VideoSurfaceFactory = std::function<QWidget*(QWidget* parent)>;

// What the player window uses.
struct PlayerServices {
    const Texts& texts;
    Commands& commands;
    Settings& settings;
    VideoPlayerManager& player;
    VideoSurfaceFactory makeVideoSurface;
};

}  // namespace tembrix
