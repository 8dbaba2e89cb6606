#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "base/result.h"
#include "base/signal.h"

namespace tembrix {

enum class PlayerStatus { paused, waiting, playing };

// The failures of a player: codes of the domain "player". Problems found while examining the file
// have the domain "media".
enum class PlayerFailure {
    coreMissing = 1,  // the playback library cannot be started
    noVideo,          // the file contains no video
    cannotPlay,       // the playback library cannot play the file
    vanished,         // moved, deleted or unmounted while open; open parts may still be played
    brokeOff,         // cannot be read any further; the part before can still be played
};

// An open video. Time 0 is the first frame shown, whatever the start time of the container is. Main
// thread only, including callbacks. At the end, the player pauses on the last frame. After a pause
// the current time is that of the frame on screen.
class Player {
  public:
    virtual ~Player() = default;

    virtual std::filesystem::path file() const = 0;
    virtual double duration() const = 0;     // seconds; 0 if the file has no end
    virtual double currentTime() const = 0;  // seconds
    virtual PlayerStatus status() const = 0;
    virtual double rate() const = 0;  // 0 while paused

    virtual void play() = 0;  // at rate 1 unless setRate() is called later
    virtual void pause() = 0;
    virtual void setRate(double rate) = 0;  // above 0 starts playback at that rate, 0 pauses

    // From 0, silent, to 1, as it was recorded. Muting keeps the volume.
    virtual void setVolume(double volume, bool muted) = 0;
    virtual double volume() const = 0;
    virtual bool isMuted() const = 0;

    // Shows the frame whose time span contains `seconds`, clamped to the video. A newer seek, or
    // the destruction of the player, ends an older one, whose completion is then called with false.
    // Each completion is called once; until then the current time does not change.
    virtual void seek(double seconds, std::function<void(bool finished)> completion) = 0;

    // Calls back with the current time every `interval` seconds of playback, and when playback
    // stops. If another frame is still shown after that, calls back again with its time.
    virtual Subscription observeTime(double interval, std::function<void(double)> observer) = 0;
    // Calls back immediately with the current status, and then at each change of status or rate.
    virtual Subscription observeStatus(std::function<void(PlayerStatus)> observer) = 0;
    // Reports that the video could not be opened, was interrupted or vanished; the text is for the
    // log. After `vanished` and `brokeOff` the player continues with what can still be read, and
    // pauses on the last frame that can.
    virtual Subscription observeFailure(std::function<void(const Error&)> observer) = 0;
};

class PlayerFactory {
  public:
    virtual ~PlayerFactory() = default;
    // Never returns null: for a file that cannot be played, the player reports the failure.
    virtual std::unique_ptr<Player> open(const std::filesystem::path& file) = 0;
};

}  // namespace tembrix
