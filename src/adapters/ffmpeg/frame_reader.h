#pragma once

#include <functional>
#include <memory>
#include <queue>
#include <vector>

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/frame_times.h"
#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

// Decodes the frame that shows at a time. Times that ascend in small steps cost one frame each;
// others start anew at a key frame. Belongs to one thread at a time.
class FrameReader {
  public:
    // The file must outlive the reader, and nobody else may read from it meanwhile.
    // `threads` decode at the same time; 0 leaves the number to the decoder.
    static Result<std::unique_ptr<FrameReader>> open(VideoFile& file, int threads = 0);

    // The frame that shows at `seconds`, clamped to the video. Valid until the next call; take a
    // reference to keep it longer.
    Result<const AVFrame*> at(double seconds);
    // When the frame given last starts.
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
    // Decodes the next frame in showing order into next_; next_.present is false at the end.
    Result<void> decodeNext();
    Result<void> feed();
    double startOf(const AVFrame& frame);

    VideoFile& file_;
    CodecHandle decoder_;
    Shown current_;
    Shown next_;
    double wantedStart_ = 0;  // frames before this one are decoded only if others need them
    bool ended_ = false;      // the decoder has given its last frame
    bool draining_ = false;
    int faults_ = 0;  // packets that gave no frame since the last frame
    // When the frames of the packets fed show that have not come out yet, or in which order they
    // are decoded where packets carry nothing else.
    std::priority_queue<double, std::vector<double>, std::greater<>> awaited_;
};

}  // namespace tembrix
