#pragma once

#include <memory>
#include <string>

#include "base/signal.h"

#include "ports/scheduler.h"

namespace tembrix {

class UserDefaults;
class VideoPlayerManager;

// Remembers the position in the open video until it is opened the next time. The position is stored
// at the end of this object and, while it changes, every few seconds. Main thread only.
class PositionMemory {
  public:
    static constexpr double storeInterval = 5.0;  // seconds; a killed process loses no more

    PositionMemory(VideoPlayerManager& player, UserDefaults& defaults, Scheduler& scheduler)
        : player_(player), defaults_(defaults), scheduler_(scheduler) {}
    ~PositionMemory();

    // Seeks to the remembered position of the video. Called once, after the player was opened.
    void begin(const std::string& videoId);
    // The video was deleted: nothing is kept.
    void forget();

  private:
    void positionChanged();
    void store();
    bool isWorthKeeping(double position) const;

    VideoPlayerManager& player_;
    UserDefaults& defaults_;
    Scheduler& scheduler_;
    std::string key_;
    std::string stored_;  // empty if nothing is stored
    bool changed_ = false;
    bool waiting_ = false;
    Subscription position_;
    std::unique_ptr<Timer> timer_;
};

}  // namespace tembrix
