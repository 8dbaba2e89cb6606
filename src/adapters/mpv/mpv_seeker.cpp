#include "adapters/mpv/mpv_seeker.h"

#include <QMetaObject>
#include <QPointer>
#include <array>
#include <fmt/format.h>
#include <mpv/client.h>
#include <utility>

#include "adapters/mpv/mpv_core.h"

namespace tembrix {

namespace {

// The core shows the first frame from 5 ms before its target on. Aiming 4 ms behind the frame's own
// time leaves 1 ms for rounding and stays clear of the frame before it.
constexpr double aim = 0.004;
// A landing this much behind the frame's own time is another frame. During playback the next frames
// may be on show by the time the core answers.
constexpr double slackPaused = 0.002;
constexpr double slackPlaying = 0.5;
// Some containers send the core to a key frame behind the target. It is then sent again with a
// start of the decoding that lies this many seconds earlier.
constexpr std::array<double, 3> leads{0, 2, 15};
// How long a seek may keep a newer one from the core.
constexpr int patienceMs = 300;

// Replies carry the serial of the seek and what was asked.
constexpr std::uint64_t commandReply = 0;
constexpr std::uint64_t timeReply = 1;
std::uint64_t replyId(std::uint64_t serial, std::uint64_t kind) {
    return serial * 2 + kind;
}

}  // namespace

MpvSeeker::MpvSeeker(MpvCore& core, double videoStart, FrameTime frameTime, Host host)
    : core_(core),
      videoStart_(videoStart),
      frameTime_(std::move(frameTime)),
      host_(std::move(host)) {
    resolver_.setMaxThreadCount(1);
    patience_.setSingleShot(true);
    connect(&patience_, &QTimer::timeout, this, &MpvSeeker::sendNext);
}

MpvSeeker::~MpvSeeker() {
    resolver_.waitForDone();
    abandon();
}

void MpvSeeker::seek(double seconds, Completion completion) {
    const auto overtaken =
        std::exchange(newest_, Request{++lastSerial_, seconds, std::move(completion)});
    resolveNewest();
    if (overtaken && overtaken->completion)
        overtaken->completion(false);
}

void MpvSeeker::setReady() {
    ready_ = true;
    sendNext();
}

void MpvSeeker::abandon() {
    underWay_.reset();
    next_.reset();
    if (const auto request = std::exchange(newest_, std::nullopt); request && request->completion)
        request->completion(false);
}

void MpvSeeker::resolveNewest() {
    if (resolving_ || !newest_)
        return;
    resolving_ = true;
    resolver_.start([this, target = Target{newest_->serial, newest_->seconds, 0}]() mutable {
        target.frame = frameTime_(target.seconds);
        QMetaObject::invokeMethod(
            this, [this, target] { resolved(target); }, Qt::QueuedConnection);
    });
}

void MpvSeeker::resolved(const Target& target) {
    resolving_ = false;
    next_ = target;
    if (newest_ && newest_->serial != target.serial)
        resolveNewest();
    sendNext();
}

void MpvSeeker::sendNext() {
    if (!next_ || !ready_)
        return;
    if (underWay_ && !underWay_->age.hasExpired(patienceMs)) {
        if (!patience_.isActive())
            patience_.start(patienceMs - static_cast<int>(underWay_->age.elapsed()) + 1);
        return;
    }
    send(*std::exchange(next_, std::nullopt), 0);
}

void MpvSeeker::send(const Target& target, int attempt) {
    patience_.stop();
    underWay_ = UnderWay{target, Step::sent, attempt, {}};
    underWay_->age.start();
    if (const double lead = leads.at(static_cast<std::size_t>(attempt)); lead != lead_)
        core_.set("hr-seek-demuxer-offset", lead_ = lead);
    core_.command(
        replyId(target.serial, commandReply),
        {"seek", fmt::format("{:.6f}", videoStart_ + target.frame + aim), "absolute+exact"});
}

void MpvSeeker::handle(const mpv_event& event) {
    if (!underWay_)
        return;
    const auto serial = underWay_->target.serial;
    switch (event.event_id) {
        case MPV_EVENT_COMMAND_REPLY:
            if (event.reply_userdata != replyId(serial, commandReply))
                return;
            if (event.error < 0)
                return abandon();
            underWay_->step = Step::accepted;
            return;
        case MPV_EVENT_SEEK:
            if (underWay_->step == Step::accepted)
                underWay_->step = Step::begun;
            return;
        case MPV_EVENT_PLAYBACK_RESTART:
            // An older seek may end while this one waits its turn in the core.
            if (underWay_->step != Step::begun)
                return;
            underWay_->step = Step::restarted;
            core_.request(replyId(serial, timeReply), "time-pos", MPV_FORMAT_DOUBLE);
            return;
        case MPV_EVENT_GET_PROPERTY_REPLY: {
            if (event.reply_userdata != replyId(serial, timeReply) ||
                underWay_->step != Step::restarted)
                return;
            const auto* property = static_cast<const mpv_event_property*>(event.data);
            const bool known = event.error >= 0 && property->format == MPV_FORMAT_DOUBLE;
            return landedAt(known ? *static_cast<const double*>(property->data)
                                  : videoStart_ + underWay_->target.frame);
        }
        default:
            return;
    }
}

void MpvSeeker::landedAt(double containerTime) {
    const double behind = containerTime - videoStart_ - underWay_->target.frame;
    const double slack = host_.isPlaying() ? slackPlaying : slackPaused;
    const int nextAttempt = underWay_->attempt + 1;
    if (behind > slack && nextAttempt < static_cast<int>(leads.size()))
        return send(underWay_->target, nextAttempt);
    underWay_->step = Step::landed;
    finishIfDrawn();
}

void MpvSeeker::finishIfDrawn() {
    if (!underWay_ || underWay_->step != Step::landed || !host_.isDrawn())
        return;
    const Target target = std::exchange(underWay_, std::nullopt)->target;
    std::optional<Request> done;
    if (newest_ && newest_->serial == target.serial)
        done = std::exchange(newest_, std::nullopt);
    const QPointer<MpvSeeker> self(this);
    sendNext();
    host_.landed(target.seconds);
    if (self && done && done->completion)
        done->completion(true);
}

}  // namespace tembrix
