#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "ports/movie_renderer.h"

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/film_plan.h"
#include "adapters/ffmpeg/media_source.h"

namespace tembrix {

// The sound of a film in stereo. Each piece starts with its own first sample; there is silence if
// the film or the source has no sound. Must be used on one thread.
class FilmSound {
  public:
    static constexpr int channels = 2;
    using Samples = std::array<std::vector<float>, channels>;

    // The job and the plan must outlive the sound. Once `stop` is true, read() returns silence.
    static Result<std::unique_ptr<FilmSound>> open(const MovieJob& job, const FilmPlan& plan,
                                                   const std::atomic<bool>& stop);

    int sampleRate() const { return sampleRate_; }
    // The length of the film in samples.
    std::int64_t length() const { return plan_.firstSample(job_.pieces.size(), sampleRate_); }

    // Replaces `out` by the next `count` samples.
    void read(std::size_t count, Samples& out);

  private:
    FilmSound(const MovieJob& job, const FilmPlan& plan) : job_(job), plan_(plan) {}
    void startPiece(std::size_t piece);
    // Decodes until `decoded_` contains the source samples before `end`, or the sound ends.
    void decodeUntil(std::int64_t end);
    bool decodeMore();
    void take(const AVFrame& frame);
    void copySource(std::size_t count, std::size_t to, Samples& out);

    const MovieJob& job_;
    const FilmPlan& plan_;
    std::unique_ptr<MediaSource> source_;
    CodecHandle decoder_;
    FrameHandle frame_ = newFrame();
    ResampleHandle resampler_;
    AVChannelLayout resampledLayout_{};
    int resampledFormat_ = -1;
    int resampledRate_ = 0;
    int sampleRate_ = 48000;

    std::int64_t position_ = 0;        // the next sample of the film to read
    std::size_t piece_ = SIZE_MAX;     // the piece that contains it
    std::int64_t sourcePosition_ = 0;  // the next sample of the source to read
    bool ended_ = true;                // the sound of the piece has ended
    bool fresh_ = true;                // the next decoded frame sets decodedFrom_
    // Decoded samples of the source at the sample rate of the film. The first one is sample
    // decodedFrom_.
    Samples decoded_;
    std::int64_t decodedFrom_ = 0;
};

}  // namespace tembrix
