#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "base/result.h"
#include "base/signal.h"

namespace tembrix {

enum class PlayerStatus { paused, waiting, playing };

// Why a player reports a failure: the codes of the domain "player". What looking into the file has
// found comes in the domain "media".
enum class PlayerFailure {
    coreMissing = 1,  // the playback library does not start
    noVideo,          // the file holds no pictures
    cannotPlay,       // the playback library gave the file up
    vanished,         // moved, deleted or unmounted while open; what is open may play on
    brokeOff,         // can be read no further; the part before can still be played
};

// One open video. Time 0 is the first frame shown, whatever the container's start time. Main thread
// only; callbacks come on the main thread. After playing to the end the player pauses on the last
// frame. After a pause the current time is that of the frame on screen.
class Player {
  public:
    virtual ~Player() = default;

    virtual std::filesystem::path file() const = 0;
    virtual double duration() const = 0;  // seconds, known from the start; 0 if the file has no end
    virtual double currentTime() const = 0;  // seconds
    virtual PlayerStatus status() const = 0;
    virtual double rate() const = 0;  // 0 while paused

    virtual void play() = 0;  // at rate 1 unless setRate says otherwise later
    virtual void pause() = 0;
    virtual void setRate(double rate) = 0;  // above 0 starts playback at that rate; 0 pauses

    // Frame-exact: shows the frame whose time span holds `seconds`, clamped to the video. A newer
    // seek overtakes an older one, whose completion then gets false; so does the end of the player.
    // Every completion is called once, and until then the current time stands still.
    virtual void seek(double seconds, std::function<void(bool finished)> completion) = 0;

    // Calls back with the current time every `interval` seconds of playback, and when playback
    // stops. If another frame was already on its way to the screen then, calls back once more with
    // the time of that frame.
    virtual Subscription observeTime(double interval, std::function<void(double)> observer) = 0;
    // Calls back at once with the present status and then at each change of status or rate.
    virtual Subscription observeStatus(std::function<void(PlayerStatus)> observer) = 0;
    // The video could not be opened, broke off or vanished; the text is for the log. After
    // `vanished` and `brokeOff` the player goes on working with what it can still read: it pauses
    // on the last frame before the break, at that frame's time.
    virtual Subscription observeFailure(std::function<void(const Error&)> observer) = 0;
};

class PlayerFactory {
  public:
    virtual ~PlayerFactory() = default;
    // Never null: a file that cannot be played gives a player that reports its failure.
    virtual std::unique_ptr<Player> open(const std::filesystem::path& file) = 0;
};

}  // namespace tembrix
