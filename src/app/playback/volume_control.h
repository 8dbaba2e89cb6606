#pragma once

#include <QWidget>

#include "base/signal.h"

#include "app/playback/player_services.h"
#include "core/settings/settings.h"

class QSlider;
class QToolButton;

namespace tembrix {

// A button that mutes the video and a slider for its volume.
class VolumeControl final : public QWidget {
    Q_OBJECT
  public:
    explicit VolumeControl(const PlayerServices& services, QWidget* parent = nullptr);

  private:
    void showVolume();

    Settings& settings_;
    QToolButton* mute_;
    QSlider* slider_;
    Subscription subscription_;
};

}  // namespace tembrix
