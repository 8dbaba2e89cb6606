#pragma once

#include <QWidget>
#include <array>
#include <functional>

#include "ports/texts.h"

class QHBoxLayout;
class QToolButton;

namespace tembrix {

class TabularLabel;

// The actions of the controls, provided by the owner.
struct VideoControlPanelActions {
    std::function<void()> seekBackward10;
    std::function<void()> seekBackward5;
    std::function<void()> togglePlayPause;
    std::function<void()> seekForward5;
    std::function<void()> seekForward10;
    std::function<void(double speed)> changeSpeed;
};

// The playback controls: seek buttons around play and pause, the speed menu, and the current time
// with the duration. Contains no logic; makePlayerControlPanel() connects it to the open video.
class VideoControlPanelView final : public QWidget {
    Q_OBJECT
  public:
    VideoControlPanelView(const Texts& texts, VideoControlPanelActions actions,
                          QWidget* parent = nullptr);

    void setPlaying(bool playing);
    void setSpeed(double speed);
    void setTimes(double now, double whole);  // seconds
    void setOperable(bool operable);          // enables the controls; the times are always shown

  private:
    void addSeekButton(const char* key, const char* icon, const char* title,
                       std::function<void()> action);
    void addPlayPause(std::function<void()> action);
    void addSpeedMenu(const std::function<void(double)>& action);
    void addTimes();

    const Texts& texts_;
    QHBoxLayout* row_;
    QWidget* controls_;
    QHBoxLayout* buttons_;
    QToolButton* playPause_ = nullptr;
    QToolButton* speed_ = nullptr;
    TabularLabel* now_ = nullptr;
    TabularLabel* whole_ = nullptr;
};

}  // namespace tembrix
