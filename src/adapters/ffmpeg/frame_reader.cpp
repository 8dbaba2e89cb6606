#include "adapters/ffmpeg/frame_reader.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

#include "base/result.h"

namespace tembrix {

namespace {

// A longer gap without decodable packets, in seconds, is an error. During a shorter one the
// previous frame is shown.
constexpr double longestHole = 1.0;
// A decoder that fails this often without producing a frame is given up.
constexpr int hopeless = 100000;
// A frame at most this many seconds ahead is reached by decoding instead of a seek.
constexpr double worthSeeking = 0.5;

Error damagedAt(double seconds) {
    return mediaError(MediaFault::undecodable,
                      fmt::format("the video is damaged at {:.1f} seconds", seconds));
}

}  // namespace

Result<std::unique_ptr<FrameReader>> FrameReader::open(VideoFile& file, int threads) {
    const MediaSource& source = *file.source;
    if (!source.info().hasVideo)
        return mediaError(MediaFault::noVideo, "the file holds no video");
    std::unique_ptr<FrameReader> reader(new FrameReader(file));
    const auto* parameters = source.stream()->codecpar;
    const AVCodec* codec = avcodec_find_decoder(parameters->codec_id);
    if (!codec)
        return mediaError(MediaFault::undecodable,
                          fmt::format("the video's format is not known: {}",
                                      avcodec_get_name(parameters->codec_id)));
    reader->decoder_.reset(avcodec_alloc_context3(codec));
    auto& decoder = *reader->decoder_;
    int code = avcodec_parameters_to_context(&decoder, parameters);
    decoder.pkt_timebase = source.stream()->time_base;
    decoder.thread_count = threads;
    if (code >= 0)
        code = avcodec_open2(&decoder, codec, nullptr);
    if (code < 0)
        return mediaError(MediaFault::undecodable, avText(code));
    return reader;
}

Result<const AVFrame*> FrameReader::at(double seconds) {
    const double target = std::max(0.0, seconds);
    const double position = next_.present ? next_.start : current_.start;
    const bool back = !current_.present || !hasStarted(current_.start, target);
    const bool leap =
        !ended_ && target - position > worthSeeking && source().hasKeyBetween(position, target);
    if (back || leap) {
        if (auto restarted = restart(target); !restarted)
            return restarted.error();
    }
    while (!ended_ && (!next_.present || hasStarted(next_.start, target))) {
        // The first frame is used for all earlier times, so its start does not matter.
        if (next_.present) {
            std::swap(current_, next_);
            next_.present = false;
            faults_ = 0;
        }
        if (auto decoded = decodeNext(); !decoded)
            return decoded.error();
        if (!current_.present && next_.present) {
            std::swap(current_, next_);
            next_.present = false;
        }
    }
    if (!current_.present || current_.start > target + longestHole)
        return damagedAt(target);
    const double holeEnd = next_.present ? next_.start : source().info().duration;
    if (faults_ > 0 && holeEnd - current_.start > longestHole &&
        target - current_.start > longestHole / 2)
        return damagedAt(target);
    return static_cast<const AVFrame*>(current_.frame.get());
}

Result<void> FrameReader::restart(double seconds) {
    current_.present = next_.present = ended_ = draining_ = false;
    faults_ = 0;
    awaited_ = {};
    avcodec_flush_buffers(decoder_.get());
    const auto place = file_.framePlace(seconds);
    if (!place)
        return place.error();
    wantedStart_ = place->start;
    return source().seek(seconds);
}

Result<void> FrameReader::decodeNext() {
    while (faults_ < hopeless) {
        const int code = avcodec_receive_frame(decoder_.get(), next_.frame.get());
        if (code == AVERROR_EOF) {
            ended_ = true;
            faults_ += static_cast<int>(awaited_.size());
            return {};
        }
        if (code == AVERROR(EAGAIN)) {
            if (auto fed = feed(); !fed)
                return fed;
            continue;
        }
        if (code < 0) {
            ++faults_;
            continue;
        }
        // This also counts the packets that produced no frame.
        next_.start = startOf(*next_.frame);
        if (!hasStarted(0, next_.start) || (current_.present && next_.start <= current_.start))
            continue;
        next_.present = true;
        return {};
    }
    return damagedAt(current_.start);
}

Result<void> FrameReader::feed() {
    auto packet = source().read();
    if (!packet)
        return packet.error();
    if (!*packet) {
        if (std::exchange(draining_, true))
            return mediaError(MediaFault::undecodable, "the decoder does not end");
        avcodec_send_packet(decoder_.get(), nullptr);
        return {};
    }
    const double time = source().time(**packet);
    if (!((*packet)->flags & AV_PKT_FLAG_DISCARD))
        awaited_.push(time);
    if (!source().ordersByDecoding())
        decoder_->skip_frame = time < wantedStart_ ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    if (avcodec_send_packet(decoder_.get(), *packet) < 0)
        ++faults_;
    return {};
}

double FrameReader::startOf(const AVFrame& frame) {
    const auto takeFirst = [this] {
        const double time = awaited_.top();
        awaited_.pop();
        return time;
    };
    if (source().ordersByDecoding() && !awaited_.empty())
        return takeFirst();
    const double start =
        source().seconds(frame.pts != AV_NOPTS_VALUE ? frame.pts : frame.best_effort_timestamp);
    // Earlier packets that produced no frame are lost; some decoders report no error for them.
    while (!awaited_.empty() && awaited_.top() < start + frameTolerance)
        if (takeFirst() < start - frameTolerance)
            ++faults_;
    return start;
}

}  // namespace tembrix
