#include "adapters/mpv/mpv_player.h"

#include <QMetaObject>
#include <QPointer>
#include <QString>
#include <algorithm>
#include <cmath>
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
constexpr std::uint64_t endQuestion = UINT64_MAX;  // apart from the ids of seeks

std::string utf8(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

Error failure(PlayerFailure code, std::string text) {
    return {"player", static_cast<int>(code), std::move(text)};
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
    failed_ = true;  // the last words of a pending seek find a player that does nothing
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

    watcher_.addPath(QString::fromStdString(utf8(file_)));
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] {
        std::error_code ignored;
        if (!std::filesystem::exists(file_, ignored))
            failure_.emit(failure(PlayerFailure::vanished,
                                  "The video was moved or deleted while open: " + utf8(file_)));
    });
    stage_->enter(*renderer_);
}

void MpvPlayer::turnBeforeDrawing() {
    // The core promises to turn pictures as it draws, and does not when it draws in memory.
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
    // Beyond the last frame there is nothing to play.
    if (failed_ || (rate > 0 && atEnd_ && !seeker_->isSeeking()))
        return;
    if (rate > 0)
        core_->set("speed", rate);
    core_->set("pause", rate <= 0);
    change(rate);
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
            if (event.reply_userdata == endQuestion && event.error >= 0 &&
                flagOf(*static_cast<const mpv_event_property*>(event.data)))
                return reachedEnd();
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
                reachedEnd();
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
    // A paused player stays at the time that was asked for, which lies within its frame.
    if (!started_ || atEnd_ || rate_ <= 0 || seeker_->isSeeking())
        return;
    const double now = containerTime - info_.videoStart;
    if (now <= time_)  // still within the frame that the last seek landed on
        return;
    time_ = info_.duration > 0 ? std::min(now, info_.duration) : now;
    tick(false);
}

void MpvPlayer::landedAt(double seconds) {
    time_ = seconds;
    for (auto& [id, ticker] : *tickers_)
        ticker.last = seconds;
    // An end reached again before the events of the seek were read makes no event of its own.
    core_->request(endQuestion, "eof-reached", MPV_FORMAT_FLAG);
}

void MpvPlayer::reachedEnd() {
    if (seeker_->isSeeking())
        return;
    atEnd_ = true;
    if (rate_ <= 0)
        return;
    if (info_.duration > 0)
        time_ = info_.duration;
    core_->set("pause", true);
    change(0);
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
    // The file cannot be read any more, while the core still has it open.
    double start = seconds;
    if (info_.frameRate > 0)
        start = std::floor((seconds + frameTolerance) * info_.frameRate) / info_.frameRate;
    return {start, start};
}

}  // namespace tembrix
