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

// The sound of a film in stereo: each piece begins with its own first sample; where the film or the
// source has no sound, there is silence. Must be used on one thread.
class FilmSound {
  public:
    static constexpr int channels = 2;
    using Samples = std::array<std::vector<float>, channels>;

    // The job and the plan must outlive the sound. Once `stop` is true, read() returns
    // silence.
    static Result<std::unique_ptr<FilmSound>> open(const MovieJob& job, const FilmPlan& plan,
                                                   const std::atomic<bool>& stop);

    int sampleRate() const { return sampleRate_; }
    // The number of samples of the whole film.
    std::int64_t length() const { return plan_.firstSample(job_.pieces.size(), sampleRate_); }

    // Replaces `out` by the next `count` samples.
    void read(std::size_t count, Samples& out);

  private:
    FilmSound(const MovieJob& job, const FilmPlan& plan) : job_(job), plan_(plan) {}
    void startPiece(std::size_t piece);
    // Decodes until `decoded_` reaches to `end`, a sample of the source, or the sound is over.
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

    std::int64_t position_ = 0;        // the film's sample to be read next
    std::size_t piece_ = SIZE_MAX;     // the piece that contains it
    std::int64_t sourcePosition_ = 0;  // the source's sample to be read next
    bool ended_ = true;                // the piece has no more sound
    bool fresh_ = true;                // the next decoded sound gives its own position
    // Decoded samples of the source in the film's rate, the first of which is decodedFrom_.
    Samples decoded_;
    std::int64_t decodedFrom_ = 0;
};

}  // namespace tembrix
