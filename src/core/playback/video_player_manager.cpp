#include "core/playback/video_player_manager.h"

#include <utility>

namespace tembrix {

VideoPlayerManager::VideoPlayerManager(PlayerFactory& players, Log& log)
    : players_(players), log_(log) {}

VideoPlayerManager::~VideoPlayerManager() {
    // A pending seek completes when the player is destroyed, so `player_` must be null by then.
    timeObserver_.reset();
    statusObserver_.reset();
    failureObserver_.reset();
    std::exchange(player_, nullptr).reset();
}

void VideoPlayerManager::open(const std::filesystem::path& file, bool plays) {
    if (player_)
        cleanup();
    player_ = players_.open(file);
    failureObserver_ = player_->observeFailure([this](const Error& error) {
        log_.line("❌ VideoPlayerManager: " + error.text);
        failed.emit(error);
    });
    if (plays)
        player_->play();
    addTimeObserver();
    // The player may change its rate by itself (play() uses 1). The chosen speed is restored.
    statusObserver_ = player_->observeStatus([this](PlayerStatus now) {
        if (!player_)
            return;
        if (now == PlayerStatus::playing &&
            static_cast<float>(player_->rate()) != static_cast<float>(playbackSpeedValue.get()))
            player_->setRate(playbackSpeedValue.get());
        if (player_ && status.get() != player_->status())
            status.set(player_->status());
    });
    hasPlayer.set(true);
}

void VideoPlayerManager::cleanup() {
    if (!player_)
        return;
    goesOn_ = false;
    player_->pause();
    timeObserver_.reset();
    statusObserver_.reset();
    failureObserver_.reset();
    // A pending seek completes when the player is destroyed. `player_` is null by then, so that no
    // observer is added.
    std::exchange(player_, nullptr).reset();
    currentTimeValue.set(0);
    playbackSpeedValue.set(1.0);
    status.set(PlayerStatus::paused);
    hasPlayer.set(false);
}

void VideoPlayerManager::addTimeObserver() {
    if (!player_)
        return;
    timeObserver_ = player_->observeTime(observerInterval,
                                         [this](double seconds) { currentTimeValue.set(seconds); });
}

void VideoPlayerManager::seek(double seconds) {
    if (!player_)
        return;
    // The observer is removed during a seek, so that a late tick cannot overwrite the new position.
    // It is added again after the last of several overlapping seeks.
    timeObserver_.reset();
    ++seeksUnderWay_;
    player_->seek(seconds, [this, seconds](bool) {
        --seeksUnderWay_;
        currentTimeValue.set(player_ ? player_->currentTime() : seconds);
        if (seeksUnderWay_ == 0)
            addTimeObserver();
    });
}

void VideoPlayerManager::seekBy(double seconds) {
    if (player_)
        seek(player_->currentTime() + seconds);
}

void VideoPlayerManager::togglePlayPause() {
    if (!player_)
        return;
    goesOn_ = false;
    if (player_->status() == PlayerStatus::playing)
        player_->pause();
    else
        player_->setRate(playbackSpeedValue.get());
}

void VideoPlayerManager::setPlaybackSpeed(double speed) {
    if (!player_)
        return;
    goesOn_ = false;
    playbackSpeedValue.set(speed);
    player_->setRate(speed);
}

double VideoPlayerManager::videoDuration() const {
    return player_ ? player_->duration() : 0;
}

std::optional<std::filesystem::path> VideoPlayerManager::currentVideoURL() const {
    if (!player_)
        return std::nullopt;
    return player_->file();
}

void VideoPlayerManager::play() {
    goesOn_ = false;
    if (player_)
        player_->play();
}

void VideoPlayerManager::pause() {
    goesOn_ = false;
    if (player_)
        player_->pause();
}

Subscription VideoPlayerManager::pauseMeanwhile() {
    ++pauses_;
    if (player_ && player_->rate() > 0) {
        player_->pause();
        goesOn_ = true;
    }
    return Subscription(lifetime_.guard([this] { endPause(); }));
}

void VideoPlayerManager::endPause() {
    if (--pauses_ == 0 && std::exchange(goesOn_, false) && player_)
        player_->setRate(playbackSpeedValue.get());
}

}  // namespace tembrix
