#include "core/playback/video_player_manager.h"

#include <utility>

namespace tembrix {

VideoPlayerManager::VideoPlayerManager(PlayerFactory& players, Log& log)
    : players_(players), log_(log) {}

VideoPlayerManager::~VideoPlayerManager() {
    // A seek that is still under way ends with the player and must find no player here.
    timeObserver_.reset();
    statusObserver_.reset();
    failureObserver_.reset();
    std::exchange(player_, nullptr).reset();
}

void VideoPlayerManager::open(const std::filesystem::path& file) {
    if (player_)
        cleanup();
    player_ = players_.open(file);
    failureObserver_ = player_->observeFailure([this](const Error& error) {
        log_.line("❌ VideoPlayerManager: " + error.text);
        failed.emit(error);
    });
    player_->play();
    addTimeObserver();
    // The player goes its own ways with the rate (a plain play runs at 1): the chosen speed wins.
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
    player_->pause();
    timeObserver_.reset();
    statusObserver_.reset();
    failureObserver_.reset();
    // Taken out first: a seek that ends with the player finds none and adds no observer to it.
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
    // No late tick may overwrite the new position while a seek is under way; a seek that a newer
    // one has overtaken does not bring the observer back.
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
    if (player_->status() == PlayerStatus::playing)
        player_->pause();
    else
        player_->setRate(playbackSpeedValue.get());
}

void VideoPlayerManager::setPlaybackSpeed(double speed) {
    if (!player_)
        return;
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
    if (player_)
        player_->play();
}

void VideoPlayerManager::pause() {
    if (player_)
        player_->pause();
}

}  // namespace tembrix
