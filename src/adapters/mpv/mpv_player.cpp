#include "adapters/mpv/mpv_player.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThreadPool>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <mpv/client.h>
#include <utility>

#include "adapters/mpv/mpv_canvas.h"
#include "adapters/mpv/mpv_core.h"
#include "adapters/mpv/mpv_renderer.h"
#include "adapters/mpv/mpv_seeker.h"
#include "adapters/mpv/mpv_stage.h"

namespace tembrix {

namespace {

enum Observed : std::uint64_t { timePos = 1, eofReached, pausedForCache, videoTrack };
// Ids of requests. Seeks use small ones.
constexpr std::uint64_t endRequest = UINT64_MAX;
constexpr std::uint64_t lastTimeRequest = UINT64_MAX - 1;
constexpr std::uint64_t pauseRequest = UINT64_MAX - 2;
constexpr std::uint64_t stopTimeRequest = UINT64_MAX - 3;

// How often the existence of the open file is checked.
constexpr int fileCheckMs = 1000;
// Playback that ends more than this many seconds before the last frame was interrupted.
constexpr double brokenTail = 1.0;

std::string utf8(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

Error failure(PlayerFailure code, std::string text) {
    return {"player", static_cast<int>(code), std::move(text)};
}

std::optional<double> numberOf(const mpv_event& event) {
    if (event.error < 0)
        return std::nullopt;
    const auto& property = *static_cast<const mpv_event_property*>(event.data);
    if (property.format != MPV_FORMAT_DOUBLE)
        return std::nullopt;
    return *static_cast<const double*>(property.data);
}

bool flagOf(const mpv_event_property& property) {
    return property.format == MPV_FORMAT_FLAG && *static_cast<const int*>(property.data) != 0;
}

}  // namespace

MpvPlayer::MpvPlayer(const std::filesystem::path& file, Media& media,
                     std::shared_ptr<MpvStage> stage)
    : file_(std::filesystem::absolute(file)), media_(media), stage_(std::move(stage)) {
    auto info = media_.probe(file_);
    if (info)
        info_ = *info;
    if (!info)
        fail(info.error());
    else if (!info_.hasVideo)
        fail(failure(PlayerFailure::noVideo, "The file holds no video: " + utf8(file_)));
    else
        load();
}

MpvPlayer::~MpvPlayer() {
    failed_ = true;  // disables all functions in case the completion of a pending seek calls them
    seeker_.reset();
    if (renderer_)
        stage_->leave(*renderer_);
    renderer_.reset();
    core_.reset();
}

void MpvPlayer::load() {
    core_ = std::make_unique<MpvCore>([this](const mpv_event& event) { handle(event); });
    if (!core_->works())
        return fail(failure(PlayerFailure::coreMissing, "The playback library does not start"));

    renderer_ =
        std::make_unique<MpvRenderer>(core_->handle(), stage_->drawing(), [this](bool isNew) {
            const QPointer<MpvPlayer> self(this);
            if (isNew)
                stage_->changed.emit();
            if (self)
                seeker_->pictureDrawn();
        });
    if (!renderer_->works())
        core_->set("vo", "null");
    else if (stage_->drawing() == MpvDrawing::inMemory)
        turnBeforeDrawing();

    seeker_ = std::make_unique<MpvSeeker>(
        *core_, info_.videoStart, [this](double seconds) { return findFrame(seconds); },
        MpvSeeker::Host{[this](double seconds) { landedAt(seconds); }, [this] { return rate_ > 0; },
                        [this] { return !renderer_->works() || renderer_->isSettled(); }});

    core_->observe(timePos, "time-pos", MPV_FORMAT_DOUBLE);
    core_->observe(eofReached, "eof-reached", MPV_FORMAT_FLAG);
    core_->observe(pausedForCache, "paused-for-cache", MPV_FORMAT_FLAG);
    core_->observe(videoTrack, "vid", MPV_FORMAT_STRING);
    core_->command(0, {"loadfile", utf8(file_)});

    connect(&fileCheck_, &QTimer::timeout, this, &MpvPlayer::checkFile);
    fileCheck_.start(fileCheckMs);
    stage_->enter(*renderer_);
}

void MpvPlayer::turnBeforeDrawing() {
    // The core does not rotate pictures that are drawn in memory.
    core_->set("video-rotate", "no");
    switch (info_.rotation) {
        case 90:
            return core_->set("vf", "lavfi=[transpose=clock]");
        case 180:
            return core_->set("vf", "lavfi=[hflip,vflip]");
        case 270:
            return core_->set("vf", "lavfi=[transpose=cclock]");
        default:
            return;
    }
}

PlayerStatus MpvPlayer::status() const {
    if (rate_ <= 0)
        return PlayerStatus::paused;
    return started_ && !stalled_ ? PlayerStatus::playing : PlayerStatus::waiting;
}

void MpvPlayer::setRate(double rate) {
    rate = std::max(rate, 0.0);
    // At the end playback cannot start.
    if (failed_ || (rate > 0 && atEnd_ && !seeker_->isSeeking()))
        return;
    if (rate > 0)
        core_->set("speed", rate);
    core_->set("pause", rate <= 0, rate <= 0 ? pauseRequest : 0);
    renderer_->setDrawsRepeats(rate <= 0 && !seeker_->isSeeking());
    change(rate);
}

void MpvPlayer::setVolume(double volume, bool muted) {
    volume_ = std::clamp(volume, 0.0, 1.0);
    muted_ = muted;
    if (!core_ || !core_->works())
        return;
    core_->set("volume", volume_ * 100);
    core_->set("mute", muted_);
}

void MpvPlayer::change(double rate) {
    const bool stops = rate <= 0 && rate_ > 0;
    rate_ = rate;
    const QPointer<MpvPlayer> self(this);
    tellStatus();
    if (self && stops)
        tick(true);
}

void MpvPlayer::tellStatus() {
    const auto now = status();
    if (now == toldStatus_ && rate_ == toldRate_)
        return;
    toldStatus_ = now;
    toldRate_ = rate_;
    statusChanged_.emit(now);
}

void MpvPlayer::seek(double seconds, std::function<void(bool finished)> completion) {
    if (failed_) {
        if (completion)
            completion(false);
        return;
    }
    const double end = info_.duration > 0 ? info_.duration : seconds;
    brokeOff_ = false;
    renderer_->setDrawsRepeats(false);
    seeker_->seek(std::clamp(seconds, 0.0, std::max(end, 0.0)), std::move(completion));
}

void MpvPlayer::handle(const mpv_event& event) {
    const QPointer<MpvPlayer> self(this);
    switch (event.event_id) {
        case MPV_EVENT_END_FILE: {
            const auto* end = static_cast<const mpv_event_end_file*>(event.data);
            const char* reason = end->reason == MPV_END_FILE_REASON_ERROR
                                     ? mpv_error_string(end->error)
                                     : "it ended";
            return fail(failure(PlayerFailure::cannotPlay, "The video cannot be played: " +
                                                               utf8(file_) + " (" + reason + ")"));
        }
        case MPV_EVENT_PROPERTY_CHANGE:
            return propertyChanged(event);
        case MPV_EVENT_GET_PROPERTY_REPLY:
            if (event.reply_userdata == endRequest && event.error >= 0 &&
                flagOf(*static_cast<const mpv_event_property*>(event.data)))
                return core_->request(lastTimeRequest, "time-pos", MPV_FORMAT_DOUBLE);
            if (event.reply_userdata == lastTimeRequest)
                return reachedEnd(numberOf(event).value_or(info_.videoStart + info_.duration));
            if (event.reply_userdata == stopTimeRequest)
                return stoppedAt(numberOf(event).value_or(info_.videoStart));
            break;
        case MPV_EVENT_SET_PROPERTY_REPLY:
            if (event.reply_userdata == pauseRequest)
                core_->request(stopTimeRequest, "time-pos", MPV_FORMAT_DOUBLE);
            break;
        case MPV_EVENT_SEEK:
            atEnd_ = false;
            break;
        case MPV_EVENT_PLAYBACK_RESTART:
            if (!started_) {
                started_ = true;
                tellStatus();
                if (self)
                    seeker_->setReady();
            }
            break;
        default:
            break;
    }
    if (self)
        seeker_->handle(event);
}

void MpvPlayer::propertyChanged(const mpv_event& event) {
    const auto& property = *static_cast<const mpv_event_property*>(event.data);
    switch (event.reply_userdata) {
        case timePos:
            if (property.format == MPV_FORMAT_DOUBLE)
                movedTo(*static_cast<const double*>(property.data));
            break;
        case eofReached:
            if (flagOf(property))
                core_->request(lastTimeRequest, "time-pos", MPV_FORMAT_DOUBLE);
            break;
        case pausedForCache:
            stalled_ = flagOf(property);
            tellStatus();
            break;
        default:
            break;
    }
}

void MpvPlayer::movedTo(double containerTime) {
    // A paused player keeps the time of the seek, which is within its frame.
    if (!started_ || atEnd_ || rate_ <= 0 || seeker_->isSeeking())
        return;
    const double now = containerTime - info_.videoStart;
    if (now <= time_)  // still the frame shown by the last seek
        return;
    time_ = info_.duration > 0 ? std::min(now, info_.duration) : now;
    tick(false);
}

void MpvPlayer::landedAt(double seconds) {
    time_ = seconds;
    for (auto& [id, ticker] : *tickers_)
        ticker.last = seconds;
    // If the end was reached again before the events of the seek were processed, no further event
    // is sent.
    core_->request(endRequest, "eof-reached", MPV_FORMAT_FLAG);
}

void MpvPlayer::stoppedAt(double containerTime) {
    // Another frame may have been shown before the core processed the pause.
    const double now = containerTime - info_.videoStart;
    if (!started_ || atEnd_ || rate_ > 0 || seeker_->isSeeking() || now <= time_ + frameTolerance)
        return;
    time_ = info_.duration > 0 ? std::min(now, info_.duration) : now;
    tick(true);
}

void MpvPlayer::reachedEnd(double containerTime) {
    if (seeker_->isSeeking())
        return;
    atEnd_ = true;
    const double last = std::max(containerTime - info_.videoStart, 0.0);
    const bool broken = last < info_.lastFrame - brokenTail;
    if (rate_ <= 0 && !broken)
        return;
    const QPointer<MpvPlayer> self(this);
    if (broken)
        time_ = last;
    else if (info_.duration > 0)
        time_ = info_.duration;
    if (rate_ > 0) {
        core_->set("pause", true);
        change(0);
    } else {
        tick(true);
    }
    if (self && broken && !std::exchange(brokeOff_, true))
        failure_.emit(
            failure(PlayerFailure::brokeOff,
                    fmt::format("The video can be read no further than {:.1f} seconds: {}", last,
                                utf8(file_))));
}

void MpvPlayer::checkFile() {
    if (std::exchange(checksFile_, true))
        return;
    // Access to a disconnected network disk can block for minutes, so the check runs on another
    // thread. The destructor does not wait for it.
    QThreadPool::globalInstance()->start([self = QPointer<MpvPlayer>(this), file = file_] {
        std::error_code error;
        const bool gone = !std::filesystem::exists(file, error);
        QMetaObject::invokeMethod(
            qApp,
            [self, gone] {
                if (self)
                    self->fileChecked(gone);
            },
            Qt::QueuedConnection);
    });
}

void MpvPlayer::fileChecked(bool gone) {
    checksFile_ = false;
    if (!std::exchange(vanished_, gone) && gone)
        failure_.emit(
            failure(PlayerFailure::vanished,
                    "The video was moved, deleted or unmounted while open: " + utf8(file_)));
}

void MpvPlayer::tick(bool always) {
    const double now = time_;
    const auto tickers = tickers_;  // an observer may destroy the player
    for (const auto& [id, seen] : Tickers(*tickers)) {
        const auto it = tickers->find(id);
        if (it == tickers->end())
            continue;
        auto& ticker = it->second;
        const bool due =
            std::floor(now / ticker.interval) != std::floor(ticker.last / ticker.interval);
        if (!always && !due)
            continue;
        ticker.last = now;
        seen.observer(now);
    }
}

Subscription MpvPlayer::observeTime(double interval, std::function<void(double)> observer) {
    const int id = nextTicker_++;
    tickers_->emplace(id, Ticker{interval, time_, std::move(observer)});
    return Subscription([weak = std::weak_ptr(tickers_), id] {
        if (auto tickers = weak.lock())
            tickers->erase(id);
    });
}

Subscription MpvPlayer::observeStatus(std::function<void(PlayerStatus)> observer) {
    auto subscription = statusChanged_.observe(observer);
    observer(status());
    return subscription;
}

Subscription MpvPlayer::observeFailure(std::function<void(const Error&)> observer) {
    return failure_.observe(std::move(observer));
}

void MpvPlayer::fail(Error error) {
    if (failed_)
        return;
    failed_ = true;
    QMetaObject::invokeMethod(
        this,
        [this, error = std::move(error)] {
            const QPointer<MpvPlayer> self(this);
            if (core_)
                core_->set("pause", true);
            if (seeker_)
                seeker_->abandon();
            if (self)
                change(0);
            if (self)
                failure_.emit(error);
        },
        Qt::QueuedConnection);
}

FramePlace MpvPlayer::findFrame(double seconds) const {
    if (const auto frame = media_.framePlace(file_, seconds))
        return *frame;
    // The file can no longer be read, although the core still has it open.
    double start = seconds;
    if (info_.frameRate > 0)
        start = std::floor((seconds + frameTolerance) * info_.frameRate) / info_.frameRate;
    return {start, start};
}

}  // namespace tembrix
