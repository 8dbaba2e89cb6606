#pragma once

#include <functional>

class QWidget;

namespace tembrix {

class Texts;
class VideoPlayerManager;

// Makes the surface on which the open video is shown.
using VideoSurfaceFactory = std::function<QWidget*(QWidget* parent)>;

// What the player window uses.
struct PlayerServices {
    const Texts& texts;
    VideoPlayerManager& player;
    VideoSurfaceFactory makeVideoSurface;
};

}  // namespace tembrix
