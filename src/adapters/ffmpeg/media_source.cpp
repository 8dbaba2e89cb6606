#include "adapters/ffmpeg/media_source.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <cmath>
#include <string_view>

namespace tembrix {

namespace {

constexpr std::int64_t unknown = AV_NOPTS_VALUE;

int interrupted(void* flag) {
    return static_cast<const std::atomic<bool>*>(flag)->load() ? 1 : 0;
}

// Formats whose detection accepts nearly any file: single images and text art.
bool isPretender(const AVInputFormat& format) {
    const std::string_view name = format.name;
    return name.ends_with("_pipe") || name == "image2" || name == "tty" || name == "bin" ||
           name == "xbin" || name == "adf" || name == "idf";
}

int clockwiseRotation(AVStream& stream) {
    std::size_t size = 0;
    const auto* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(std::int32_t))
        return 0;
    const double angle = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    if (std::isnan(angle))
        return 0;
    const int quarters = static_cast<int>(std::lround(-angle / 90.0));
    return ((quarters % 4 + 4) % 4) * 90;
}

}  // namespace

Result<std::unique_ptr<MediaSource>> MediaSource::open(const std::filesystem::path& file,
                                                       Streams streams,
                                                       const std::atomic<bool>* interrupt) {
    std::error_code failure;
    if (!std::filesystem::is_regular_file(file, failure))
        return mediaError(MediaFault::cannotOpen,
                          failure ? failure.message() : "there is no such file");

    std::unique_ptr<MediaSource> source(new MediaSource);
    source->file_ = file;
    source->interrupt_ = interrupt;
    AVFormatContext* format = avformat_alloc_context();
    if (interrupt)
        format->interrupt_callback = {interrupted, const_cast<std::atomic<bool>*>(interrupt)};
    // Without the protocol prefix, a name with a colon would be parsed as a URL.
    const std::string url = "file:" + file.string();
    if (const int code = avformat_open_input(&format, url.c_str(), nullptr, nullptr); code < 0)
        return mediaError(MediaFault::cannotOpen, avText(code));
    source->format_.reset(format);
    if (isPretender(*format->iformat))
        return mediaError(MediaFault::noVideo, avText(AVERROR_INVALIDDATA));
    if (const int code = avformat_find_stream_info(format, nullptr); code < 0)
        return mediaError(MediaFault::cannotOpen, avText(code));
    if (auto chosen = source->chooseStreams(streams); !chosen)
        return chosen.error();
    return source;
}

Result<void> MediaSource::chooseStreams(Streams streams) {
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
        AVStream* stream = format_->streams[i];
        stream->discard = AVDISCARD_ALL;
        const auto& codec = *stream->codecpar;
        const bool cover = (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        if (!video_ && codec.codec_type == AVMEDIA_TYPE_VIDEO && !cover && codec.width > 0)
            video_ = stream;
        if (!audio_ && codec.codec_type == AVMEDIA_TYPE_AUDIO && codec.sample_rate > 0)
            audio_ = stream;
    }
    if (!video_ && !audio_)
        return mediaError(MediaFault::noVideo, avText(AVERROR_INVALIDDATA));
    describe();
    stream_ = seekBy_ = video_ ? video_ : audio_;
    stream_->discard = AVDISCARD_DEFAULT;
    if (video_) {
        const auto codec = video_->codecpar->codec_id;
        completesTimes_ = codec == AV_CODEC_ID_MPEG1VIDEO || codec == AV_CODEC_ID_MPEG2VIDEO;
        if (auto found = findStart(); !found)
            return found;
        findEnd();
    } else {
        info_.duration = std::max(0.0, static_cast<double>(format_->duration) / AV_TIME_BASE);
        info_.videoStart =
            format_->start_time == unknown ? 0 : double(format_->start_time) / AV_TIME_BASE;
    }
    if (streams == Streams::audio && stream_ != audio_) {
        stream_->discard = AVDISCARD_ALL;
        stream_ = audio_;
        if (!stream_)
            return mediaError(MediaFault::noVideo, "the file has no sound");
        stream_->discard = AVDISCARD_DEFAULT;
        ordersByDecoding_ = completesTimes_ = false;
        // Matroska files have an index of the video stream only.
        const std::string_view format = format_->iformat->name;
        if (format.find("matroska") == std::string_view::npos)
            seekBy_ = audio_;
    }
    return {};
}

void MediaSource::describe() {
    info_.hasVideo = video_ != nullptr;
    info_.hasAudio = audio_ != nullptr;
    if (!video_)
        return;
    info_.rotation = clockwiseRotation(*video_);
    const auto rate = av_guess_frame_rate(format_.get(), video_, nullptr);
    const auto average = video_->avg_frame_rate.num > 0 ? video_->avg_frame_rate : rate;
    info_.frameRate = average.num > 0 && average.den > 0 ? av_q2d(average) : 0;
    double width = video_->codecpar->width;
    double height = video_->codecpar->height;
    const double aspect = av_q2d(pixelAspect());
    if (aspect > 1)
        width = std::round(width * aspect);
    else
        height = std::round(height / aspect);
    if (info_.rotation % 180 != 0)
        std::swap(width, height);
    info_.size = {width, height};
}

AVRational MediaSource::pixelAspect() const {
    const auto aspect = av_guess_sample_aspect_ratio(format_.get(), video_, nullptr);
    return aspect.num > 0 && aspect.den > 0 ? aspect : AVRational{1, 1};
}

Result<void> MediaSource::findStart() {
    // Frames displayed before the first key frame cannot be decoded. Frames that only serve to
    // decode others are marked as discarded.
    constexpr int enough = 20;
    std::int64_t first = unknown, key = unknown, decoding = unknown;
    for (int shown = 0; shown < enough;) {
        auto packet = read();
        if (!packet)
            return packet.error();
        if (!*packet)
            break;
        const AVPacket& p = **packet;
        if (key == unknown && !(p.flags & AV_PKT_FLAG_KEY))
            continue;
        if (p.pts == unknown)
            ordersByDecoding_ = true;
        const auto time = p.pts != unknown ? p.pts : p.dts;
        if (time == unknown)
            continue;
        if (key == unknown)
            key = time;
        if (p.flags & AV_PKT_FLAG_DISCARD)
            continue;
        ++shown;
        if (time >= key && (first == unknown || time < first))
            first = time;
        if (p.dts != unknown && (decoding == unknown || p.dts < decoding))
            decoding = p.dts;
    }
    if (ordersByDecoding_ && decoding != unknown)
        first = decoding;
    if (first == unknown)
        return mediaError(MediaFault::unreadable, "the video holds no frames");
    info_.videoStart = static_cast<double>(first) * av_q2d(video_->time_base);
    return {};
}

void MediaSource::findEnd() {
    double end = 0;
    const double frame = info_.frameRate > 0 ? 1 / info_.frameRate : 0;
    const double container =
        format_->duration > 0 ? static_cast<double>(format_->duration) / AV_TIME_BASE : 0;
    if (seek(std::max(container, 1.0) * 2 + 60)) {
        for (auto packet = read(); packet && *packet; packet = read()) {
            const AVPacket& p = **packet;
            if (rawTime(p) == unknown || (p.flags & AV_PKT_FLAG_DISCARD))
                continue;
            const double lasts =
                p.duration > 0 ? double(p.duration) * av_q2d(stream_->time_base) : frame;
            info_.lastFrame = std::max(info_.lastFrame, time(p));
            end = std::max(end, time(p) + lasts);
        }
    }
    info_.duration = end > 0 ? end : container;
}

std::int64_t MediaSource::rawTime(const AVPacket& packet) const {
    if (ordersByDecoding_ || packet.pts == unknown)
        return packet.dts;
    return packet.pts;
}

double MediaSource::seconds(std::int64_t timestamp) const {
    return static_cast<double>(timestamp) * av_q2d(stream_->time_base) - info_.videoStart;
}

std::int64_t MediaSource::timestamp(double seconds, const AVStream& stream) const {
    return static_cast<std::int64_t>(
        std::floor((seconds + info_.videoStart) / av_q2d(stream.time_base)));
}

double MediaSource::time(const AVPacket& packet) const {
    return seconds(rawTime(packet));
}

double MediaSource::decodingTime(const AVPacket& packet) const {
    return packet.dts != unknown ? seconds(packet.dts) : time(packet);
}

bool MediaSource::startAt(double seconds) {
    pending_ = false;
    ahead_.clear();
    if (av_seek_frame(format_.get(), seekBy_->index, timestamp(seconds, *seekBy_),
                      AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    for (auto packet = read(); packet && *packet; packet = read()) {
        if (rawTime(**packet) != unknown && ((*packet)->flags & AV_PKT_FLAG_KEY)) {
            pending_ = true;
            return true;
        }
    }
    return false;
}

Result<void> MediaSource::seek(double seconds) {
    const double bound = latestStart(seconds);
    // Containers seek by decoding time, and some seeks end at a place without a usable packet. The
    // packet found is checked, and the seek is repeated further back until it is suitable.
    double want = bound, step = 0.5;
    for (;;) {
        if (interrupt_ && *interrupt_)
            return mediaError(MediaFault::unreadable, avText(AVERROR_EXIT));
        const bool found = startAt(want);
        if (found && time(*packet_) <= bound)
            return {};
        if (want < -1 && found)
            return {};
        if (want < -3600)
            return mediaError(MediaFault::unreadable, "no frame can be read");
        double from = want;
        if (found && packet_->dts != unknown)
            from = std::min(from, this->seconds(packet_->dts));
        if (!found && info_.duration > 0)
            from = std::min(from, info_.duration);
        want = from - step;
        step *= 2;
    }
}

bool MediaSource::hasKeyBetween(double position, double seconds) const {
    const auto* entry = avformat_index_get_entry_from_timestamp(
        stream_, timestamp(latestStart(seconds), *stream_), AVSEEK_FLAG_BACKWARD);
    constexpr double longEnoughToSeek = 12;
    return seconds - position > longEnoughToSeek ||
           (entry && entry->timestamp > timestamp(position, *stream_));
}

Result<AVPacket*> MediaSource::read() {
    if (pending_) {
        pending_ = false;
        return packet_.get();
    }
    if (!ahead_.empty()) {
        packet_ = std::move(ahead_.front());
        ahead_.pop_front();
    } else {
        const auto found = readInto(*packet_);
        if (!found)
            return found.error();
        if (!*found)
            return static_cast<AVPacket*>(nullptr);
    }
    if (completesTimes_ && packet_->pts == unknown && packet_->dts != unknown)
        if (auto completed = completeTime(*packet_); !completed)
            return completed.error();
    return packet_.get();
}

Result<bool> MediaSource::readInto(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        if (interrupt_ && *interrupt_)
            return mediaError(MediaFault::unreadable, avText(AVERROR_EXIT));
        const int code = av_read_frame(format_.get(), &packet);
        // A truncated or damaged file ends where it can no longer be read.
        if (code == AVERROR_EOF || code == AVERROR_INVALIDDATA)
            return false;
        if (code < 0)
            return mediaError(MediaFault::unreadable, avText(code));
        if (packet.stream_index == stream_->index)
            return true;
    }
}

Result<void> MediaSource::completeTime(AVPacket& packet) {
    // In these formats a reference frame is displayed when the next reference frame is decoded. The
    // frames in between are displayed when they are decoded.
    std::int64_t end = packet.dts + packet.duration;
    for (std::size_t i = 0;; ++i) {
        if (i == ahead_.size()) {
            auto next = newPacket();
            const auto found = readInto(*next);
            if (!found)
                return found.error();
            if (!*found)
                break;
            ahead_.push_back(std::move(next));
        }
        const AVPacket& next = *ahead_[i];
        if (next.dts == unknown)
            continue;
        end = next.dts + next.duration;
        if (next.pts != next.dts) {
            packet.pts = next.dts;
            return {};
        }
    }
    packet.pts = end;
    return {};
}

}  // namespace tembrix
