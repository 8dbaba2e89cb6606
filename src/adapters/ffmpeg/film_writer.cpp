#include "adapters/ffmpeg/film_writer.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "base/uuid.h"

namespace tembrix {

namespace {

// Fast enough on two cores without a visible loss of quality.
constexpr const char* preset = "veryfast";
constexpr const char* constantQuality = "18";
constexpr int secondsPerKeyFrame = 2;  // for fast seeks
constexpr int soundBitRate = 192000;

// A system error keeps its number, which determines the advice shown to the user.
Error writeError(int code) {
    constexpr int lastErrno = 4095;
    if (code < 0 && code >= -lastErrno)
        return {"file", AVUNERROR(code), avText(code)};
    return {"Export", -1, avText(code)};
}

Result<void> syncFile(const std::filesystem::path& file) {
    const int handle = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    const bool synced = handle >= 0 && ::fsync(handle) == 0;
    const int reason = errno;
    if (handle >= 0)
        ::close(handle);
    if (!synced)
        return writeError(AVERROR(reason));
    return {};
}

}  // namespace

Result<std::unique_ptr<FilmWriter>> FilmWriter::open(const std::filesystem::path& target,
                                                     const FilmFormat& format) {
    std::unique_ptr<FilmWriter> writer(new FilmWriter);
    writer->target_ = target;
    writer->temporary_ = target.parent_path() / fmt::format(".{}.part", Uuid::random().text());
    AVFormatContext* made = nullptr;
    if (const int code = avformat_alloc_output_context2(&made, nullptr, "mp4", nullptr); code < 0)
        return writeError(code);
    writer->format_.reset(made);
    if (auto opened = writer->openVideo(format); !opened)
        return opened.error();
    if (format.sampleRate > 0)
        if (auto opened = writer->openAudio(format); !opened)
            return opened.error();
    const std::string url = "file:" + writer->temporary_.string();
    int code = avio_open(&made->pb, url.c_str(), AVIO_FLAG_WRITE);
    if (code >= 0)
        code = avformat_write_header(made, nullptr);
    if (code < 0)
        return writeError(code);
    return writer;
}

FilmWriter::~FilmWriter() {
    format_.reset();
    std::error_code ignored;
    if (!finished_)
        std::filesystem::remove(temporary_, ignored);
}

Result<void> FilmWriter::openVideo(const FilmFormat& format) {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (!codec)
        return Error{"Export", -1, "no encoder for H.264 is installed"};
    video_.reset(avcodec_alloc_context3(codec));
    auto& e = *video_;
    e.width = format.width;
    e.height = format.height;
    e.pix_fmt = AV_PIX_FMT_YUV420P;
    e.sample_aspect_ratio = {1, 1};
    e.framerate = {format.framesPerSecond, 1};
    e.time_base = {1, format.framesPerSecond};
    e.gop_size = secondsPerKeyFrame * format.framesPerSecond;
    e.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    e.color_range = AVCOL_RANGE_MPEG;
    e.colorspace = format.matrix;
    e.color_primaries = format.primaries;
    e.color_trc = format.transfer;
    av_opt_set(e.priv_data, "preset", preset, 0);
    av_opt_set(e.priv_data, "crf", constantQuality, 0);
    av_opt_set_int(e.priv_data, "a53cc", 0, 0);
    videoStream_ = avformat_new_stream(format_.get(), nullptr);
    videoStream_->time_base = e.time_base;
    videoStream_->avg_frame_rate = e.framerate;
    videoStream_->sample_aspect_ratio = e.sample_aspect_ratio;
    int code = avcodec_open2(&e, codec, nullptr);
    if (code >= 0)
        code = avcodec_parameters_from_context(videoStream_->codecpar, &e);
    if (code < 0)
        return writeError(code);
    return {};
}

Result<void> FilmWriter::openAudio(const FilmFormat& format) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec)
        return Error{"Export", -1, "no encoder for AAC is installed"};
    audio_.reset(avcodec_alloc_context3(codec));
    auto& e = *audio_;
    e.sample_rate = format.sampleRate;
    e.sample_fmt = AV_SAMPLE_FMT_FLTP;
    e.bit_rate = soundBitRate;
    e.time_base = {1, format.sampleRate};
    e.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&e.ch_layout, format.channels);
    audioStream_ = avformat_new_stream(format_.get(), nullptr);
    audioStream_->time_base = e.time_base;
    int code = avcodec_open2(&e, codec, nullptr);
    if (code >= 0)
        code = avcodec_parameters_from_context(audioStream_->codecpar, &e);
    if (code < 0)
        return writeError(code);
    return {};
}

Result<void> FilmWriter::addPicture(FrameHandle picture) {
    // The encoder chooses the key frames itself.
    picture->pict_type = AV_PICTURE_TYPE_NONE;
    picture->key_frame = 0;
    picture->interlaced_frame = 0;
    picture->pts = pictures_++;
    if (const int code = avcodec_send_frame(video_.get(), picture.get()); code < 0)
        return writeError(code);
    return drain(*video_, *videoStream_);
}

Result<void> FilmWriter::addSound(const float* const* samples, int count) {
    auto frame = newFrame();
    frame->format = audio_->sample_fmt;
    frame->sample_rate = audio_->sample_rate;
    frame->nb_samples = count;
    frame->pts = samples_;
    av_channel_layout_copy(&frame->ch_layout, &audio_->ch_layout);
    int code = av_frame_get_buffer(frame.get(), 0);
    if (code >= 0) {
        for (int c = 0; c < audio_->ch_layout.nb_channels; ++c)
            std::memcpy(frame->extended_data[c], samples[c],
                        static_cast<std::size_t>(count) * sizeof(float));
        code = avcodec_send_frame(audio_.get(), frame.get());
    }
    if (code < 0)
        return writeError(code);
    samples_ += count;
    return drain(*audio_, *audioStream_);
}

Result<void> FilmWriter::drain(AVCodecContext& encoder, AVStream& stream) {
    for (;;) {
        int code = avcodec_receive_packet(&encoder, packet_.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return {};
        if (code >= 0) {
            if (packet_->duration == 0 && &stream == videoStream_)
                packet_->duration = 1;
            av_packet_rescale_ts(packet_.get(), encoder.time_base, stream.time_base);
            packet_->stream_index = stream.index;
            code = av_interleaved_write_frame(format_.get(), packet_.get());
        }
        // Write errors may be reported only when the buffer is flushed.
        if (code >= 0 && format_->pb->error < 0)
            code = format_->pb->error;
        if (code < 0)
            return writeError(code);
    }
}

Result<void> FilmWriter::finish(const std::atomic<bool>& stop) {
    avcodec_send_frame(video_.get(), nullptr);
    if (auto drained = drain(*video_, *videoStream_); !drained)
        return drained;
    if (audio_) {
        avcodec_send_frame(audio_.get(), nullptr);
        if (auto drained = drain(*audio_, *audioStream_); !drained)
            return drained;
    }
    int code = av_write_trailer(format_.get());
    const int pending = format_->pb->error;
    const int closed = avio_closep(&format_->pb);
    for (const int result : {code, pending, closed})
        if (result < 0)
            return writeError(result);
    if (auto synced = syncFile(temporary_); !synced)
        return synced;
    if (stop)
        return writeError(AVERROR_EXIT);
    std::error_code failure;
    if (std::filesystem::exists(target_, failure))
        return Error{"Export", -1, "there is a file of that name already: " + target_.string()};
    std::filesystem::rename(temporary_, target_, failure);
    if (failure)
        return Error{"Export", -1, failure.message()};
    finished_ = true;
    return {};
}

}  // namespace tembrix
