#pragma once

#include <QElapsedTimer>
#include <QThreadPool>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <optional>

#include "base/result.h"

struct mpv_event;

namespace tembrix {

class MpvCore;

// Exact seeks on an mpv core. A time is first turned into the start of its frame, away from the
// main thread, and the core is then sent to that very frame. Both steps work on one seek at a time
// and then go on with the newest, so that a stream of seeks shows a stream of pictures.
class MpvSeeker final : public QObject {
    Q_OBJECT
  public:
    using Completion = std::function<void(bool finished)>;
    // The start of the frame that shows at a time; called on another thread.
    using FrameTime = std::function<double(double seconds)>;

    // What the player does for its seeks. `landed` tells the time of the picture now on show,
    // before the completion of the seek; both may destroy the seeker.
    struct Host {
        std::function<void(double seconds)> landed;
        std::function<bool()> isPlaying;
        std::function<bool()> isDrawn;  // the core's pictures are all on show
    };

    MpvSeeker(MpvCore& core, double videoStart, FrameTime frameTime, Host host);
    ~MpvSeeker() override;

    // `seconds` lies within the video.
    void seek(double seconds, Completion completion);
    bool isSeeking() const { return newest_ || underWay_; }

    void setReady();  // the core has shown its first picture
    void pictureDrawn() { finishIfDrawn(); }
    void handle(const mpv_event& event);  // every event of the core
    void abandon();                       // ends the newest seek: the core has given up

  private:
    struct Request {
        std::uint64_t serial = 0;
        double seconds = 0;
        Completion completion;
    };
    struct Target {
        std::uint64_t serial = 0;
        double seconds = 0;
        double frame = 0;
    };
    enum class Step { sent, accepted, begun, restarted, landed };
    struct UnderWay {
        Target target;
        Step step = Step::sent;
        int attempt = 0;
        QElapsedTimer age;
    };

    void resolveNewest();
    void resolved(const Target& target);
    void sendNext();
    void send(const Target& target, int attempt);
    void landedAt(double containerTime);
    void finishIfDrawn();

    MpvCore& core_;
    double videoStart_;
    FrameTime frameTime_;
    Host host_;
    bool ready_ = false;
    double lead_ = 0;
    std::uint64_t lastSerial_ = 0;
    std::optional<Request> newest_;
    bool resolving_ = false;
    std::optional<Target> next_;
    std::optional<UnderWay> underWay_;
    QTimer patience_;
    QThreadPool resolver_;
};

}  // namespace tembrix
