#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <optional>

#include "base/log.h"
#include "base/published.h"
#include "base/result.h"
#include "base/signal.h"

#include "ports/player.h"

#include "core/background/lifetime.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/key_transport.h"
#include "core/playback/playhead.h"

namespace tembrix {

// Owns the player of the open video and provides current time, speed and playback control to all
// windows. Without a player, every operation does nothing. Main thread only.
class VideoPlayerManager final : public Playhead, public KeyTransport {
  public:
    static constexpr double observerInterval = 0.1;  // seconds
    static constexpr std::array<double, 8> speeds{0.1, 0.25, 0.5, 0.75, 1.0, 1.5, 2.0, 5.0};

    VideoPlayerManager(PlayerFactory& players, Log& log);
    ~VideoPlayerManager() override;

    // The player of the open video, or null. Updated before hasPlayer changes.
    Player* player() const { return player_.get(); }
    Published<bool, VideoPlayerManager> hasPlayer{false};
    Published<double, VideoPlayerManager> playbackSpeedValue{1.0};
    // All windows read this, not the player.
    Published<double, VideoPlayerManager> currentTimeValue{0.0};
    Published<bool, VideoPlayerManager> isResizingTag{false};
    Published<PlayerStatus, VideoPlayerManager> status{PlayerStatus::paused};
    Signal<Error> failed;  // the video could not be opened, or playback was interrupted
    bool isVideoPlayerInEditorMode = false;

    // Creates the player, starts playback if wanted, and observes time and status.
    void open(const std::filesystem::path& file, bool plays = true);
    void cleanup();

    void seek(double seconds) override;
    void togglePlayPause() override;
    void setPlaybackSpeed(double speed);
    double videoDuration() const override;
    std::optional<std::filesystem::path> currentVideoURL() const;
    void addTimeObserver();

    // Seeks relative to the player's own time; for the playback controls.
    void seekBy(double seconds);

    double currentTime() const override { return currentTimeValue.get(); }
    double playbackSpeed() const override { return playbackSpeedValue.get(); }
    void play() override;
    void pause() override;
    // Pauses while something needs the user's whole attention, until the subscription ends, which
    // may be after the player. Then playback goes on, unless it was paused before or somebody has
    // played or paused meanwhile.
    Subscription pauseMeanwhile();
    void setResizingTag(bool resizing) override { isResizingTag.set(resizing); }
    double transportTime() const override { return currentTimeValue.get(); }

  private:
    PlayerFactory& players_;
    Log& log_;
    std::unique_ptr<Player> player_;
    void endPause();

    int seeksUnderWay_ = 0;
    int pauses_ = 0;       // by pauseMeanwhile()
    bool goesOn_ = false;  // when the last of them ends
    Subscription timeObserver_;
    Subscription statusObserver_;
    Subscription failureObserver_;
    Lifetime lifetime_;
};

}  // namespace tembrix
