#pragma once

#include <QWidget>
#include <array>
#include <functional>

#include "ports/texts.h"

class QHBoxLayout;
class QToolButton;

namespace tembrix {

class TabularLabel;

// What the panel's controls do; the host fills them in.
struct VideoControlPanelActions {
    std::function<void()> seekBackward10;
    std::function<void()> seekBackward5;
    std::function<void()> togglePlayPause;
    std::function<void()> seekForward5;
    std::function<void()> seekForward10;
    std::function<void(double speed)> changeSpeed;
};

// The transport bar: seek buttons around play and pause, the menu of speeds, and the time code of
// now and whole. It only shows and forwards; makePlayerControlPanel() makes the bar of the open
// video.
class VideoControlPanelView final : public QWidget {
    Q_OBJECT
  public:
    VideoControlPanelView(const Texts& texts, VideoControlPanelActions actions,
                          QWidget* parent = nullptr);

    void setPlaying(bool playing);
    void setSpeed(double speed);
    void setTimes(double now, double whole);  // seconds
    void setOperable(bool operable);          // the controls; the times stay

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
