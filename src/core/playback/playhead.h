#pragma once

namespace tembrix {

// The player as marking and editing see it; implemented by the player control.
class Playhead {
  public:
    virtual ~Playhead() = default;
    virtual double currentTime() const = 0;    // seconds
    virtual double videoDuration() const = 0;  // seconds, 0 without an item
    virtual double playbackSpeed() const = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void seek(double seconds) = 0;
    virtual void setResizingTag(bool resizing) = 0;  // suspends the check for drawings
};

// The time axis of every stamp computation: the item's duration, 1.0 seconds at least.
inline double maxDuration(const Playhead& playhead) {
    const double duration = playhead.videoDuration();
    return duration > 1.0 ? duration : 1.0;
}

}  // namespace tembrix
