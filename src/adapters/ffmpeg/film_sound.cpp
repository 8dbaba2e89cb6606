#include "adapters/ffmpeg/film_sound.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <utility>

namespace tembrix {

namespace {

// How many seconds before the first wanted sample decoding starts, for correct sound.
constexpr double leadIn = 0.2;
// Containers round times. Gaps smaller than this, in seconds, are ignored.
constexpr double jitter = 0.01;

}  // namespace

Result<std::unique_ptr<FilmSound>> FilmSound::open(const MovieJob& job, const FilmPlan& plan,
                                                   const std::atomic<bool>& stop) {
    std::unique_ptr<FilmSound> sound(new FilmSound(job, plan));
    auto source = MediaSource::open(job.source, MediaSource::Streams::audio, &stop);
    if (!source)
        return source.error();
    sound->source_ = std::move(*source);
    const auto* stream = sound->source_->stream();
    if (stream->codecpar->sample_rate == 44100)
        sound->sampleRate_ = 44100;
    // If the sound cannot be decoded, the film is silent; the pictures are useful without it.
    if (const AVCodec* codec = avcodec_find_decoder(stream->codecpar->codec_id)) {
        sound->decoder_.reset(avcodec_alloc_context3(codec));
        auto& decoder = *sound->decoder_;
        decoder.pkt_timebase = stream->time_base;
        if (avcodec_parameters_to_context(&decoder, stream->codecpar) < 0 ||
            avcodec_open2(&decoder, codec, nullptr) < 0)
            sound->decoder_.reset();
    }
    return sound;
}

void FilmSound::read(std::size_t count, Samples& out) {
    for (auto& channel : out)
        channel.assign(count, 0);
    for (std::size_t done = 0; done < count;) {
        while (piece_ == SIZE_MAX || (piece_ + 1 < job_.pieces.size() &&
                                      position_ >= plan_.firstSample(piece_ + 1, sampleRate_)))
            startPiece(piece_ == SIZE_MAX ? 0 : piece_ + 1);
        std::size_t part = count - done;
        if (piece_ + 1 < job_.pieces.size())
            part = std::min(part, static_cast<std::size_t>(
                                      plan_.firstSample(piece_ + 1, sampleRate_) - position_));
        copySource(part, done, out);
        position_ += static_cast<std::int64_t>(part);
        done += part;
    }
}

void FilmSound::startPiece(std::size_t piece) {
    piece_ = piece;
    ended_ = true;
    for (auto& channel : decoded_)
        channel.clear();
    const auto* content = std::get_if<SourcePiece>(&job_.pieces[piece]);
    if (!content || !decoder_)
        return;
    sourcePosition_ = decodedFrom_ = std::llround(content->start * sampleRate_);
    resampler_.reset();
    fresh_ = true;
    avcodec_flush_buffers(decoder_.get());
    ended_ = !source_->seek(std::max(0.0, content->start - leadIn));
}

void FilmSound::copySource(std::size_t count, std::size_t to, Samples& out) {
    const std::int64_t end = sourcePosition_ + static_cast<std::int64_t>(count);
    if (!std::holds_alternative<SourcePiece>(job_.pieces[piece_]))
        return;
    decodeUntil(end);
    const std::int64_t first = std::max(sourcePosition_, decodedFrom_);
    const std::int64_t last =
        std::min(end, decodedFrom_ + static_cast<std::int64_t>(decoded_[0].size()));
    for (std::size_t c = 0; c < channels && first < last; ++c) {
        const auto from = decoded_[c].begin() - decodedFrom_;
        std::copy(from + first, from + last,
                  out[c].begin() + static_cast<std::ptrdiff_t>(to) + (first - sourcePosition_));
    }
    const auto over = std::clamp<std::int64_t>(end - decodedFrom_, 0,
                                               static_cast<std::int64_t>(decoded_[0].size()));
    for (auto& channel : decoded_)
        channel.erase(channel.begin(), channel.begin() + over);
    decodedFrom_ += over;
    sourcePosition_ = end;
}

void FilmSound::decodeUntil(std::int64_t end) {
    while (!ended_ && decodedFrom_ + static_cast<std::int64_t>(decoded_[0].size()) < end)
        ended_ = !decodeMore();
}

bool FilmSound::decodeMore() {
    const int code = avcodec_receive_frame(decoder_.get(), frame_.get());
    if (code >= 0) {
        take(*frame_);
        return true;
    }
    if (code == AVERROR_EOF)
        return false;
    auto packet = source_->read();
    if (!packet)
        return false;
    if (!*packet) {
        avcodec_send_packet(decoder_.get(), nullptr);
        return true;
    }
    const double wanted = static_cast<double>(sourcePosition_) / sampleRate_ - leadIn;
    if (source_->time(**packet) >= wanted)
        avcodec_send_packet(decoder_.get(), *packet);
    return true;
}

void FilmSound::take(const AVFrame& frame) {
    const auto time = frame.pts != AV_NOPTS_VALUE ? frame.pts : frame.best_effort_timestamp;
    if (!resampler_ || frame.format != resampledFormat_ || frame.sample_rate != resampledRate_ ||
        av_channel_layout_compare(&frame.ch_layout, &resampledLayout_) != 0) {
        resampledFormat_ = frame.format;
        resampledRate_ = frame.sample_rate;
        av_channel_layout_copy(&resampledLayout_, &frame.ch_layout);
        AVChannelLayout in{}, out{};
        if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&in, frame.ch_layout.nb_channels);
        else
            av_channel_layout_copy(&in, &frame.ch_layout);
        av_channel_layout_default(&out, channels);
        SwrContext* made = nullptr;
        swr_alloc_set_opts2(&made, &out, AV_SAMPLE_FMT_FLTP, sampleRate_, &in,
                            static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0,
                            nullptr);
        resampler_.reset(made);
        // Mixing many channels down to two must not clip.
        av_opt_set_double(made, "rematrix_maxval", 1.0, 0);
        av_channel_layout_uninit(&in);
        if (swr_init(made) < 0) {
            resampler_.reset();
            return;
        }
        for (auto& channel : decoded_)
            channel.clear();
        fresh_ = true;
    }
    const auto next = decodedFrom_ + static_cast<std::int64_t>(decoded_[0].size());
    const auto starts =
        time == AV_NOPTS_VALUE ? next : std::llround(source_->seconds(time) * sampleRate_);
    // The samples still in the resampler are before this frame.
    const auto held = swr_get_delay(resampler_.get(), sampleRate_);
    if (std::exchange(fresh_, false))
        decodedFrom_ = starts;
    else if (starts - held > next + std::llround(jitter * sampleRate_))
        for (auto& channel : decoded_)  // a gap in the source's sound is silence
            channel.insert(channel.end(), static_cast<std::size_t>(starts - held - next), 0.0F);

    const auto before = decoded_[0].size();
    const int room = swr_get_out_samples(resampler_.get(), frame.nb_samples);
    std::uint8_t* planes[channels];
    for (std::size_t c = 0; c < channels; ++c) {
        decoded_[c].resize(before + static_cast<std::size_t>(std::max(room, 0)));
        planes[c] = reinterpret_cast<std::uint8_t*>(decoded_[c].data() + before);
    }
    const int made =
        swr_convert(resampler_.get(), planes, room,
                    const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
    for (auto& channel : decoded_)
        channel.resize(before + static_cast<std::size_t>(std::max(made, 0)));
}

}  // namespace tembrix
