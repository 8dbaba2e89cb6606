#pragma once

#include <QElapsedTimer>
#include <QThreadPool>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <optional>

#include "ports/media.h"

struct mpv_event;

namespace tembrix {

class MpvCore;

// Exact seeks on an mpv core. First the frame of the time is found on another thread; then the core
// seeks to that frame. Each of the two steps processes one seek at a time and continues with the
// newest, so that a series of seeks shows a series of pictures.
class MpvSeeker final : public QObject {
    Q_OBJECT
  public:
    using Completion = std::function<void(bool finished)>;
    // Finds the frame shown at a time. Called on another thread.
    using FindFrame = std::function<FramePlace(double seconds)>;

    // Functions of the player. `landed` is called with the time of the picture on screen, before
    // the completion of the seek. Both may destroy the seeker.
    struct Host {
        std::function<void(double seconds)> landed;
        std::function<bool()> isPlaying;
        std::function<bool()> isDrawn;  // all pictures of the core are on screen
    };

    MpvSeeker(MpvCore& core, double videoStart, FindFrame findFrame, Host host);
    ~MpvSeeker() override;

    // `seconds` must be within the video.
    void seek(double seconds, Completion completion);
    bool isSeeking() const { return newest_ || underWay_; }

    void setReady();  // the core has shown its first picture
    void pictureDrawn() { finishIfDrawn(); }
    void handle(const mpv_event& event);  // every event of the core
    void abandon();                       // ends the newest seek as not finished

  private:
    struct Request {
        std::uint64_t serial = 0;
        double seconds = 0;
        Completion completion;
    };
    struct Target {
        std::uint64_t serial = 0;
        double seconds = 0;
        FramePlace frame;
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
    FindFrame findFrame_;
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
