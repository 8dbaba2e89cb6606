#include "core/control/drag_seek.h"

namespace tembrix {

void DragSeek::seek(double seconds) {
    const double now = scheduler_.monotonic();
    if (!lastSeekTime_ || now - *lastSeekTime_ >= seekThrottleInterval) {
        waiting_.reset();
        lastSeekTime_ = now;
        playhead_.seek(seconds);
        return;
    }
    const bool underWay = waiting_.has_value();
    waiting_ = seconds;
    if (underWay)
        return;
    timer_ = scheduler_.after(*lastSeekTime_ + seekThrottleInterval - now, [this] {
        if (!waiting_)
            return;
        const double place = *waiting_;
        waiting_.reset();
        lastSeekTime_ = scheduler_.monotonic();
        playhead_.seek(place);
    });
}

}  // namespace tembrix
