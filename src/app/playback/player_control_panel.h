#pragma once

class QWidget;

namespace tembrix {

class Commands;
class Texts;
class VideoPlayerManager;

// The playback controls of the open video. They control the player and show its status, speed and
// time.
QWidget* makePlayerControlPanel(VideoPlayerManager& player, Commands& commands, const Texts& texts,
                                QWidget* parent = nullptr);

}  // namespace tembrix
