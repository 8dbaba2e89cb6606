#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "base/result.h"

#include "ports/media.h"

#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

// Finds the frame shown at a time from the packets alone, without decoding. Parts of the file that
// were read are remembered, so that scrubbing back and forth does not read them again.
class FrameTimes {
  public:
    Result<FramePlace> at(MediaSource& source, double seconds);

  private:
    // A scanned part of the file. `starts` contains every frame start within [from, to) in
    // ascending order.
    struct Stretch {
        double from = 0;
        double to = 0;
        double decodeFrom = 0;  // the decoding time of the first packet, a key frame
        std::vector<double> starts;
    };
    static Result<Stretch> scan(MediaSource& source, double seconds);

    std::deque<Stretch> stretches_;  // the most recently read first
};

// An open video and the frame times found so far.
struct VideoFile {
    std::unique_ptr<MediaSource> source;
    FrameTimes times;

    Result<FramePlace> framePlace(double seconds) { return times.at(*source, seconds); }
};

}  // namespace tembrix
