#pragma once

class QWidget;

namespace tembrix {

class Texts;
class VideoPlayerManager;

// The playback controls of the open video. They control the player and show its status, speed and
// time.
QWidget* makePlayerControlPanel(VideoPlayerManager& player, const Texts& texts,
                                QWidget* parent = nullptr);

}  // namespace tembrix
