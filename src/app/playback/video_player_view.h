#pragma once

#include <QWidget>
#include <vector>

#include "base/result.h"
#include "base/signal.h"

#include "app/playback/player_services.h"

class QLabel;

namespace tembrix {

// The content of the player window: the video on a black background with the playback controls
// below it. Problems with the video are shown in a line between them.
class VideoPlayerView final : public QWidget {
    Q_OBJECT
  public:
    explicit VideoPlayerView(const PlayerServices& services, QWidget* parent = nullptr);

  private:
    void showFailure(const Error& error);
    void showFailureText();

    const PlayerServices services_;
    QLabel* failure_;
    const char* failureKey_ = nullptr;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
