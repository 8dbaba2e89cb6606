#pragma once

#include <functional>
#include <memory>
#include <queue>
#include <vector>

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/frame_times.h"
#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

// Decodes the frame shown at a time. Times that ascend in small steps cost one frame each; other
// times start decoding at a key frame. Must be used by one thread at a time.
class FrameReader {
  public:
    // The file must outlive the reader and must not be read by others meanwhile. `threads` is the
    // number of decoding threads; 0 lets the decoder choose it.
    static Result<std::unique_ptr<FrameReader>> open(VideoFile& file, int threads = 0);

    // The frame shown at `seconds`, clamped to the video. Valid until the next call; take a
    // reference to keep it longer.
    Result<const AVFrame*> at(double seconds);
    // The start of the frame that at() returned last.
    double start() const { return current_.start; }

  private:
    struct Shown {
        FrameHandle frame = newFrame();
        double start = 0;
        bool present = false;
    };

    explicit FrameReader(VideoFile& file) : file_(file) {}
    MediaSource& source() { return *file_.source; }
    Result<void> restart(double seconds);
    // Decodes the next frame in display order into next_; next_.present is false at the end.
    Result<void> decodeNext();
    Result<void> feed();
    double startOf(const AVFrame& frame);

    VideoFile& file_;
    CodecHandle decoder_;
    Shown current_;
    Shown next_;
    double wantedStart_ = 0;  // earlier frames are decoded only if other frames depend on them
    bool ended_ = false;      // the decoder has returned its last frame
    bool draining_ = false;
    int faults_ = 0;  // packets without a frame since the last frame
    // Display times of the fed packets whose frames the decoder has not returned yet. If packets
    // have decoding times only, those are used.
    std::priority_queue<double, std::vector<double>, std::greater<>> awaited_;
};

}  // namespace tembrix
