#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <string>

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
    std::function<void(double seconds)> seek;
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
    // How many seconds the inner and the outer seek buttons go.
    void setSteps(const std::string& inner, const std::string& outer);
    void setOperable(bool operable);  // enables the controls; the times are always shown

  private:
    QToolButton* addSeekButton(const char* key, const char* icon, std::function<void()> action);
    void addPlayPause(std::function<void()> action);
    void addSpeedMenu(const std::function<void(double)>& action);
    void addTimes(std::function<void(double)> seek);

    const Texts& texts_;
    QHBoxLayout* row_;
    QWidget* controls_;
    QHBoxLayout* buttons_;
    std::array<QToolButton*, 4> seeks_{};  // from the left
    QToolButton* playPause_ = nullptr;
    QToolButton* speed_ = nullptr;
    TabularLabel* now_ = nullptr;
    TabularLabel* whole_ = nullptr;
    double duration_ = 0;
    double time_ = 0;
    double shownSpeed_ = 1;
};

}  // namespace tembrix
