#pragma once

class QWidget;

namespace tembrix {

class Texts;
class VideoPlayerManager;

// The transport bar of the open video: its controls drive the player, and it shows the player's
// status, speed and time.
QWidget* makePlayerControlPanel(VideoPlayerManager& player, const Texts& texts,
                                QWidget* parent = nullptr);

}  // namespace tembrix
