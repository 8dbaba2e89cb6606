#include "adapters/ffmpeg/frame_times.h"

#include <algorithm>
#include <limits>

#include "adapters/ffmpeg/av_handles.h"

namespace tembrix {

namespace {

// The maximum number of frames that are decoded before a frame with an earlier display time.
constexpr std::size_t reorderDepth = 16;
// How many seconds beyond the wanted time a scan reads, for subsequent seeks.
constexpr double lookAhead = 0.5;
constexpr std::size_t remembered = 16;

}  // namespace

Result<FramePlace> FrameTimes::at(MediaSource& source, double seconds) {
    const double time = std::max(0.0, seconds);
    auto found = std::find_if(stretches_.begin(), stretches_.end(), [&](const Stretch& s) {
        return hasStarted(s.from, time) && !hasStarted(s.to, time);
    });
    if (found == stretches_.end()) {
        auto stretch = scan(source, time);
        if (!stretch)
            return stretch.error();
        stretches_.push_front(std::move(*stretch));
        if (stretches_.size() > remembered)
            stretches_.pop_back();
        found = stretches_.begin();
    }
    const auto& starts = found->starts;
    const auto later = std::upper_bound(starts.begin(), starts.end(), latestStart(time));
    return FramePlace{later == starts.begin() ? starts.front() : *(later - 1), found->decodeFrom,
                      source.isIndexed()};
}

Result<FrameTimes::Stretch> FrameTimes::scan(MediaSource& source, double seconds) {
    if (auto sought = source.seek(seconds); !sought)
        return sought.error();
    Stretch stretch;
    bool first = true, ended = false;
    for (std::size_t later = 0; later <= reorderDepth;) {
        auto packet = source.read();
        if (!packet)
            return packet.error();
        ended = !*packet;
        if (ended)
            break;
        const double time = source.time(**packet);
        if (std::exchange(first, false)) {
            stretch.from = time;
            stretch.decodeFrom = std::min(time, source.decodingTime(**packet));
        }
        const bool shown = !((*packet)->flags & AV_PKT_FLAG_DISCARD) && hasStarted(0, time);
        if (shown && time >= stretch.from)
            stretch.starts.push_back(time);
        if (shown && time > seconds + lookAhead)
            ++later;
    }
    auto& starts = stretch.starts;
    if (starts.empty())
        return mediaError(MediaFault::unreadable, "no frame can be read at this time");
    std::sort(starts.begin(), starts.end());
    stretch.from = std::min(stretch.from, starts.front());
    stretch.to = ended || starts.size() <= reorderDepth ? std::numeric_limits<double>::infinity()
                                                        : starts[starts.size() - 1 - reorderDepth];
    return stretch;
}

}  // namespace tembrix
