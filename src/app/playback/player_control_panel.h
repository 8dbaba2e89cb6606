#pragma once

class QWidget;

namespace tembrix {

struct AppServices;

// The transport bar of the open video: its controls drive the player, and it shows the player's
// status, speed and time.
QWidget* makePlayerControlPanel(AppServices& services, QWidget* parent = nullptr);

}  // namespace tembrix
