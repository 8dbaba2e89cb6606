#pragma once

namespace tembrix {

// The player functions that marking and editing use. Implemented by the player control.
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

// The length of the time axis for all stamp computations: the duration of the video, at least 1.0
// seconds.
inline double maxDuration(const Playhead& playhead) {
    const double duration = playhead.videoDuration();
    return duration > 1.0 ? duration : 1.0;
}

}  // namespace tembrix
