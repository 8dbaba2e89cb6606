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

// The core shows the first frame that starts at most 5 ms before its target. A target 4 ms after
// the start of the frame leaves 1 ms for rounding and excludes the previous frame.
constexpr double aim = 0.004;
// If the shown time differs from the start of the frame by more than this, another frame is shown.
// During playback later frames may be on screen when the core replies.
constexpr double slackPaused = 0.002;
constexpr double slackPlaying = 0.5;
// In some containers the core starts at a key frame after the target. The seek is then repeated
// with decoding starting this many seconds earlier.
constexpr std::array<double, 3> leads{0, 2, 15};
// In a file without an index the core searches for a packet by its decoding time. The search starts
// this many seconds earlier than necessary.
constexpr double searchMargin = 0.1;
// For how long a seek may delay a newer one.
constexpr int patienceMs = 300;

// The id of a reply consists of the serial number of the seek and the kind of the request.
constexpr std::uint64_t commandReply = 0;
constexpr std::uint64_t timeReply = 1;
std::uint64_t replyId(std::uint64_t serial, std::uint64_t kind) {
    return serial * 2 + kind;
}

}  // namespace

MpvSeeker::MpvSeeker(MpvCore& core, double videoStart, FindFrame findFrame, Host host)
    : core_(core),
      videoStart_(videoStart),
      findFrame_(std::move(findFrame)),
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
    resolver_.start([this, target = Target{newest_->serial, newest_->seconds, {}}]() mutable {
        target.frame = findFrame_(target.seconds);
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
    const auto& frame = target.frame;
    double lead = leads.at(static_cast<std::size_t>(attempt));
    if (!frame.indexed)
        lead += frame.start - frame.decodeFrom + searchMargin;
    if (lead != lead_)
        core_.set("hr-seek-demuxer-offset", lead_ = lead);
    core_.command(
        replyId(target.serial, commandReply),
        {"seek", fmt::format("{:.6f}", videoStart_ + frame.start + aim), "absolute+exact"});
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
            // An older seek may complete while this one is still queued in the core.
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
                                  : videoStart_ + underWay_->target.frame.start);
        }
        default:
            return;
    }
}

void MpvSeeker::landedAt(double containerTime) {
    const double behind = containerTime - videoStart_ - underWay_->target.frame.start;
    const bool wrong =
        behind > (host_.isPlaying() ? slackPlaying : slackPaused) || behind < -slackPaused;
    const int nextAttempt = underWay_->attempt + 1;
    if (wrong && nextAttempt < static_cast<int>(leads.size()))
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
