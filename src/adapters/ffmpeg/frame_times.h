#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "base/result.h"

#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

// Finds when the frame of a time starts, from packets alone. Remembers the stretches of the file
// that it has read, so that scrubbing back and forth reads nothing twice.
class FrameTimes {
  public:
    Result<double> at(MediaSource& source, double seconds);

  private:
    // Every frame that starts within [from, to) is in `starts`, which ascends.
    struct Stretch {
        double from = 0;
        double to = 0;
        std::vector<double> starts;
    };
    static Result<Stretch> scan(MediaSource& source, double seconds);

    std::deque<Stretch> stretches_;  // the last read first
};

// A video opened for its frames, with what is known of their times.
struct VideoFile {
    std::unique_ptr<MediaSource> source;
    FrameTimes times;

    Result<double> frameStart(double seconds) { return times.at(*source, seconds); }
};

}  // namespace tembrix
