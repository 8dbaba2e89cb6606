#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>

#include "base/result.h"

#include "ports/media.h"

#include "adapters/ffmpeg/av_handles.h"

namespace tembrix {

// A frame is shown at the time `seconds` if it starts at or before the returned time. Frame grab,
// player and film all use this rule. At 29.97 frames per second every 50th frame starts exactly
// half a tick from a whole one; the margin prevents rounding errors from deciding.
inline double latestStart(double seconds) {
    return seconds + frameTolerance + 1e-6;
}
inline bool hasStarted(double frameStart, double seconds) {
    return frameStart <= latestStart(seconds);
}

// An open media file and its packets, with times on the user's time axis: 0 is the first frame
// shown. May be used by one thread at a time.
class MediaSource {
  public:
    enum class Streams { video, audio };

    // Opens the file for reading packets of its video or of its sound. Seeks and reads fail once
    // `interrupt`, if given, is true; it must outlive the source.
    static Result<std::unique_ptr<MediaSource>> open(const std::filesystem::path& file,
                                                     Streams streams = Streams::video,
                                                     const std::atomic<bool>* interrupt = nullptr);

    const MediaInfo& info() const { return info_; }
    const std::filesystem::path& file() const { return file_; }
    // The stream whose packets read() returns.
    AVStream* stream() const { return stream_; }
    // The pixel aspect ratio of the video: width by height of one pixel.
    AVRational pixelAspect() const;
    // Whether packets have decoding times only. Their frames are then displayed at these times in
    // ascending order.
    bool ordersByDecoding() const { return ordersByDecoding_; }

    // Seconds on the user's time axis.
    double seconds(std::int64_t timestamp) const;
    // The display time of the packet's frame, or its decoding time if ordersByDecoding().
    double time(const AVPacket& packet) const;

    // The decoding time of the packet, or its time() if it has none.
    double decodingTime(const AVPacket& packet) const;
    // Whether the container has an index of its frames. Streams of recorders and broadcasters have
    // none; a seek then searches the file.
    bool isIndexed() const { return !(format_->iformat->flags & AVFMT_TS_DISCONT); }

    // Moves to a place from which the frame at `seconds` can be decoded: the next packet is a key
    // frame displayed by then, or the first packet of the file.
    Result<void> seek(double seconds);
    // Whether the key frame at which seek(seconds) would start is known to be after `position`.
    bool hasKeyBetween(double position, double seconds) const;
    // The next packet of the stream, or null at the end. Valid until the next call.
    Result<AVPacket*> read();

  private:
    MediaSource() = default;
    Result<void> chooseStreams(Streams streams);
    Result<void> findStart();
    void findEnd();
    void describe();
    std::int64_t timestamp(double seconds, const AVStream& stream) const;
    std::int64_t rawTime(const AVPacket& packet) const;
    // Moves to the key frame before `seconds` by the index of the container and reads it into
    // packet_. Returns false if nothing can be read there.
    bool startAt(double seconds);
    // Reads the next packet of the stream without changing it; returns false at the end.
    Result<bool> readInto(AVPacket& packet);
    // Computes the display time of a packet if the container omits it.
    Result<void> completeTime(AVPacket& packet);

    std::filesystem::path file_;
    const std::atomic<bool>* interrupt_ = nullptr;
    FormatHandle format_;
    AVStream* stream_ = nullptr;
    AVStream* video_ = nullptr;
    AVStream* audio_ = nullptr;
    AVStream* seekBy_ = nullptr;  // the stream whose index is used for seeks
    MediaInfo info_;
    bool ordersByDecoding_ = false;
    bool completesTimes_ = false;
    PacketHandle packet_ = newPacket();
    std::deque<PacketHandle> ahead_;  // packets read ahead to compute the times of earlier ones
    bool pending_ = false;            // read() returns packet_, which was read already
};

}  // namespace tembrix
