#pragma once

#include <memory>
#include <optional>

#include "ports/scheduler.h"

#include "core/playback/playhead.h"

namespace tembrix {

// Limits the seeks of a drag to one per interval. The last position is always reached, so that the
// picture matches the edge under the pointer. Main thread only.
class DragSeek {
  public:
    static constexpr double seekThrottleInterval = 0.033;  // seconds

    DragSeek(Playhead& playhead, Scheduler& scheduler)
        : playhead_(playhead), scheduler_(scheduler) {}

    void seek(double seconds);
    void drop() { waiting_.reset(); }  // discards a seek that is still waiting

  private:
    Playhead& playhead_;
    Scheduler& scheduler_;
    std::optional<double> lastSeekTime_;
    std::optional<double> waiting_;  // the position to seek to when the interval has passed
    std::unique_ptr<Timer> timer_;
};

}  // namespace tembrix
