#pragma once

#include <QObject>
#include <QTimer>
#include <map>
#include <memory>
#include <optional>

#include "base/result.h"
#include "base/signal.h"

#include "ports/media.h"
#include "ports/player.h"

struct mpv_event;

namespace tembrix {

class MpvCore;
class MpvRenderer;
class MpvSeeker;
class MpvStage;

// The open video, played by libmpv. The media port determines which frame belongs to a time, so
// that a seek shows the same frame as a frame grab. Main thread only.
class MpvPlayer final : public QObject, public Player {
    Q_OBJECT
  public:
    MpvPlayer(const std::filesystem::path& file, Media& media, std::shared_ptr<MpvStage> stage);
    ~MpvPlayer() override;

    std::filesystem::path file() const override { return file_; }
    double duration() const override { return info_.duration; }
    double currentTime() const override { return time_; }
    PlayerStatus status() const override;
    double rate() const override { return rate_; }

    void play() override { setRate(1.0); }
    void pause() override { setRate(0); }
    void setRate(double rate) override;
    void setVolume(double volume, bool muted) override;
    double volume() const override { return volume_; }
    bool isMuted() const override { return muted_; }
    void seek(double seconds, std::function<void(bool finished)> completion) override;

    Subscription observeTime(double interval, std::function<void(double)> observer) override;
    Subscription observeStatus(std::function<void(PlayerStatus)> observer) override;
    Subscription observeFailure(std::function<void(const Error&)> observer) override;

  private:
    struct Ticker {
        double interval = 0;
        double last = 0;
        std::function<void(double)> observer;
    };
    using Tickers = std::map<int, Ticker>;

    void load();
    void turnBeforeDrawing();
    void handle(const mpv_event& event);
    void propertyChanged(const mpv_event& event);
    void movedTo(double containerTime);
    void landedAt(double seconds);
    void stoppedAt(double containerTime);
    void reachedEnd(double containerTime);
    void checkFile();
    void fileChecked(bool gone);
    void change(double rate);
    void tellStatus();
    void tick(bool always);
    void fail(Error error);                      // notifies observers later, once there are any
    FramePlace findFrame(double seconds) const;  // any thread

    std::filesystem::path file_;
    Media& media_;
    std::shared_ptr<MpvStage> stage_;
    MediaInfo info_;
    double time_ = 0;
    double rate_ = 0;
    double volume_ = 1;
    bool muted_ = false;
    bool started_ = false;  // the first picture is shown
    bool stalled_ = false;
    bool atEnd_ = false;
    bool failed_ = false;
    PlayerStatus toldStatus_ = PlayerStatus::paused;
    double toldRate_ = 0;
    std::shared_ptr<Tickers> tickers_ = std::make_shared<Tickers>();
    int nextTicker_ = 0;
    Signal<PlayerStatus> statusChanged_;
    Signal<Error> failure_;
    QTimer fileCheck_;
    bool checksFile_ = false;
    bool vanished_ = false;
    bool brokeOff_ = false;
    std::unique_ptr<MpvCore> core_;
    std::unique_ptr<MpvRenderer> renderer_;
    std::unique_ptr<MpvSeeker> seeker_;
};

}  // namespace tembrix
