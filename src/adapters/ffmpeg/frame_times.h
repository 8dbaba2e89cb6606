#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "base/result.h"

#include "ports/media.h"

#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

// Finds the frame that shows at a time, from packets alone. The parts of the file that were read
// are remembered, so that scrubbing back and forth does not read them again.
class FrameTimes {
  public:
    Result<FramePlace> at(MediaSource& source, double seconds);

  private:
    // Every frame that starts within [from, to) is in `starts`, which ascends.
    struct Stretch {
        double from = 0;
        double to = 0;
        double decodeFrom = 0;  // the decoding time of its first packet, a key frame
        std::vector<double> starts;
    };
    static Result<Stretch> scan(MediaSource& source, double seconds);

    std::deque<Stretch> stretches_;  // the last read first
};

// An open video and the known times of its frames.
struct VideoFile {
    std::unique_ptr<MediaSource> source;
    FrameTimes times;

    Result<FramePlace> framePlace(double seconds) { return times.at(*source, seconds); }
};

}  // namespace tembrix
