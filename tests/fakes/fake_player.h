#pragma once

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/result.h"
#include "base/signal.h"

#include "ports/player.h"

namespace tembrix {

// A player whose clock and seeks are controlled by the test. As with a real player, a seek is
// pending and the time does not change until finishSeek(). `finishSeeksAtOnce` completes seeks
// immediately.
class FakePlayer final : public Player {
  public:
    FakePlayer(std::filesystem::path file, double duration)
        : file_(std::move(file)), duration_(duration) {}

    ~FakePlayer() override {
        tickers_->clear();
        overtake();
        if (destroyed)
            destroyed();
    }

    // Controls for the test.
    bool finishSeeksAtOnce = false;
    std::function<void()> destroyed;  // called by the destructor

    // Plays until `seconds`; observers are called for each interval that has passed. At the end,
    // the player pauses. A paused player is moved without ticks.
    void advanceTo(double seconds) {
        const double target = clamp(std::min(seconds, readableTo_));
        if (status_ != PlayerStatus::playing) {
            time_ = target;
            return;
        }
        const auto tickers = tickers_;  // an observer may destroy the player
        const double from = time_;
        for (const auto& [id, ticker] : std::map(*tickers)) {
            const auto first = static_cast<long>(std::floor(from / ticker.interval + 1e-9)) + 1;
            const auto last = static_cast<long>(std::floor(target / ticker.interval + 1e-9));
            for (long tick = first; tick <= last && tickers->contains(id); ++tick) {
                time_ = static_cast<double>(tick) * ticker.interval;
                ticker.observer(time_);
            }
        }
        if (tickers.use_count() == 1)
            return;
        time_ = target;
        const bool broken = target >= readableTo_;
        if (broken || (duration_ > 0 && target >= duration_))
            pause();
        if (broken && tickers.use_count() > 1)
            fail({"player", static_cast<int>(PlayerFailure::brokeOff), "cut off"});
    }
    void advanceBy(double seconds) { advanceTo(time_ + seconds); }

    // Calls all time observers with the given time, for example a late one.
    void tick(double seconds) {
        const auto tickers = tickers_;
        for (const auto& [id, ticker] : std::map(*tickers))
            if (tickers->contains(id))
                ticker.observer(seconds);
    }

    bool isSeeking() const { return pendingSeek_.has_value(); }
    double seekTarget() const { return pendingSeek_ ? pendingSeek_->first : time_; }
    // Completes the pending seek at its target or, with false, at the previous time.
    void finishSeek(bool finished = true) {
        if (!pendingSeek_)
            return;
        auto [target, completion] = *std::exchange(pendingSeek_, std::nullopt);
        if (finished)
            time_ = target;
        const auto tickers = tickers_;  // the completion may destroy the player
        if (completion)
            completion(finished);
        if (tickers.use_count() == 1 || !finished || target <= readableTo_)
            return;
        time_ = readableTo_;
        tick(time_);
        fail({"player", static_cast<int>(PlayerFailure::brokeOff), "cut off"});
    }

    // The file can be read up to `seconds` only: playback and seeks end there.
    void breakOffAt(double seconds) { readableTo_ = seconds; }
    // The file was moved, deleted or unmounted.
    void vanish() { fail({"player", static_cast<int>(PlayerFailure::vanished), "vanished"}); }
    // The file cannot be opened: the player does nothing, and reportFailure() reports it.
    void failToOpen(const Error& error) {
        openFailure_ = error;
        duration_ = 0;
    }
    void reportFailure() {
        if (openFailure_ && !std::exchange(openFailureReported_, true))
            fail(*openFailure_);
    }

    void setStatus(PlayerStatus status) { change(status, rate_); }
    void setDuration(double duration) { duration_ = duration; }
    void fail(const Error& error) { failure_.emit(error); }

    // Recorded calls.
    std::vector<double> seeks;  // as requested, before clamping
    std::vector<double> rates;  // all rates set by play, pause and setRate
    std::size_t timeObserverCount() const { return tickers_->size(); }

    std::filesystem::path file() const override { return file_; }
    double duration() const override { return duration_; }
    double currentTime() const override { return time_; }
    PlayerStatus status() const override { return status_; }
    double rate() const override { return rate_; }

    void play() override { setRate(1.0); }
    void pause() override { setRate(0); }
    void setRate(double rate) override {
        rates.push_back(rate);
        if (openFailure_)
            return;
        const bool stops = rate <= 0 && rate_ > 0;
        const auto tickers = tickers_;
        change(rate > 0 ? PlayerStatus::playing : PlayerStatus::paused, rate);
        if (stops && tickers.use_count() > 1)
            tick(time_);
    }

    void setVolume(double volume, bool muted) override {
        volume_ = std::clamp(volume, 0.0, 1.0);
        muted_ = muted;
    }
    double volume() const override { return volume_; }
    bool isMuted() const override { return muted_; }

    void seek(double seconds, std::function<void(bool finished)> completion) override {
        seeks.push_back(seconds);
        if (openFailure_)
            return completion ? completion(false) : void();
        overtake();
        pendingSeek_.emplace(clamp(seconds), std::move(completion));
        if (finishSeeksAtOnce)
            finishSeek();
    }

    Subscription observeTime(double interval, std::function<void(double)> observer) override {
        const int id = nextTicker_++;
        tickers_->emplace(id, Ticker{interval, std::move(observer)});
        return Subscription([weak = std::weak_ptr(tickers_), id] {
            if (auto tickers = weak.lock())
                tickers->erase(id);
        });
    }
    Subscription observeStatus(std::function<void(PlayerStatus)> observer) override {
        auto subscription = statusChanged_.observe(observer);
        observer(status_);
        return subscription;
    }
    Subscription observeFailure(std::function<void(const Error&)> observer) override {
        return failure_.observe(std::move(observer));
    }

  private:
    struct Ticker {
        double interval;
        std::function<void(double)> observer;
    };

    double clamp(double seconds) const {
        return std::max(0.0, duration_ > 0 ? std::min(seconds, duration_) : seconds);
    }

    void overtake() { finishSeek(false); }

    void change(PlayerStatus status, double rate) {
        if (status == status_ && rate == rate_)
            return;
        status_ = status;
        rate_ = rate;
        statusChanged_.emit(status_);
    }

    std::filesystem::path file_;
    double duration_;
    double readableTo_ = std::numeric_limits<double>::infinity();
    std::optional<Error> openFailure_;
    bool openFailureReported_ = false;
    double time_ = 0;
    double rate_ = 0;
    double volume_ = 1;
    bool muted_ = false;
    PlayerStatus status_ = PlayerStatus::paused;
    std::optional<std::pair<double, std::function<void(bool)>>> pendingSeek_;
    std::shared_ptr<std::map<int, Ticker>> tickers_ = std::make_shared<std::map<int, Ticker>>();
    int nextTicker_ = 0;
    Signal<PlayerStatus> statusChanged_;
    Signal<Error> failure_;
};

// Creates fake players. The test sets the properties of the next video and accesses the last
// player.
class FakePlayerFactory final : public PlayerFactory {
  public:
    double duration = 60;  // seconds; for players created later
    bool finishSeeksAtOnce = false;
    std::optional<Error> failure;  // for players created later
    std::vector<std::filesystem::path> opened;

    // The last player created; null before the first one and after it was destroyed.
    FakePlayer* player() const { return *player_; }

    std::unique_ptr<Player> open(const std::filesystem::path& file) override {
        auto player = std::make_unique<FakePlayer>(file, duration);
        player->finishSeeksAtOnce = finishSeeksAtOnce;
        if (failure)
            player->failToOpen(*failure);
        player->destroyed = [slot = player_, self = player.get()] {
            if (*slot == self)
                *slot = nullptr;
        };
        *player_ = player.get();
        opened.push_back(file);
        return player;
    }

  private:
    std::shared_ptr<FakePlayer*> player_ = std::make_shared<FakePlayer*>(nullptr);
};

}  // namespace tembrix
