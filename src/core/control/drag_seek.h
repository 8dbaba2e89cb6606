#pragma once

#include <memory>
#include <optional>

#include "ports/scheduler.h"

#include "core/playback/playhead.h"

namespace tembrix {

// Seeks for a hand that drags: at most once per interval, but always to where the hand came to
// rest, so that the picture is that of the edge under the pointer. Main thread only.
class DragSeek {
  public:
    static constexpr double seekThrottleInterval = 0.033;  // seconds

    DragSeek(Playhead& playhead, Scheduler& scheduler)
        : playhead_(playhead), scheduler_(scheduler) {}

    void seek(double seconds);
    void drop() { waiting_.reset(); }  // what has not been sought yet

  private:
    Playhead& playhead_;
    Scheduler& scheduler_;
    std::optional<double> lastSeekTime_;
    std::optional<double> waiting_;  // the place to seek once the interval has passed
    std::unique_ptr<Timer> timer_;
};

}  // namespace tembrix
