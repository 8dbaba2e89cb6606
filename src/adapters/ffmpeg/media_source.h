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

// A frame has started by the time `seconds` if it starts at or before this: the one rule by which
// frame grab, player and film choose the frame of a time. At 29.97 frames per second every 50th
// start lies just half a tick from a whole one, so the last bit of a sum must not decide.
inline double latestStart(double seconds) {
    return seconds + frameTolerance + 1e-6;
}
inline bool hasStarted(double frameStart, double seconds) {
    return frameStart <= latestStart(seconds);
}

// An open media file: its packets on the user's time axis, where 0 is the first frame shown. May be
// used by one thread at a time.
class MediaSource {
  public:
    enum class Streams { video, audio };

    // Opens the file for reading packets of its video or of its sound. `interrupt`, if given, makes
    // seeks and reads fail once it is true; it must outlive the source.
    static Result<std::unique_ptr<MediaSource>> open(const std::filesystem::path& file,
                                                     Streams streams = Streams::video,
                                                     const std::atomic<bool>* interrupt = nullptr);

    const MediaInfo& info() const { return info_; }
    const std::filesystem::path& file() const { return file_; }
    // The stream whose packets read() returns.
    AVStream* stream() const { return stream_; }
    // The pixel shape of the video: width by height of one pixel.
    AVRational pixelAspect() const;
    // Whether packets have decoding times only. Their frames then show at these times in ascending
    // order.
    bool ordersByDecoding() const { return ordersByDecoding_; }

    // Seconds on the user's time axis.
    double seconds(std::int64_t timestamp) const;
    // When the packet's frame shows, or when it is decoded if ordersByDecoding().
    double time(const AVPacket& packet) const;

    // When the packet is decoded, or its time() if it does not carry that.
    double decodingTime(const AVPacket& packet) const;
    // Whether the container lists where its frames are. Streams of recorders and broadcasters do
    // not; there a seek searches the file.
    bool isIndexed() const { return !(format_->iformat->flags & AVFMT_TS_DISCONT); }

    // Moves to a place from which the frame of `seconds` can be decoded: the next packet is a key
    // frame that shows by then, or the first of the file.
    Result<void> seek(double seconds);
    // Whether the key frame at which seek(seconds) would start is known to lie after `position`.
    bool hasKeyBetween(double position, double seconds) const;
    // The next packet of the stream; null at the end. The packet is valid until the next call.
    Result<AVPacket*> read();

  private:
    MediaSource() = default;
    Result<void> chooseStreams(Streams streams);
    Result<void> findStart();
    void findEnd();
    void describe();
    std::int64_t timestamp(double seconds, const AVStream& stream) const;
    std::int64_t rawTime(const AVPacket& packet) const;
    // Moves to the key frame before `seconds` by the container's index, and reads it into packet_;
    // false if nothing can be read there.
    bool startAt(double seconds);
    // The next packet of the stream as the container gives it, into `packet`; false at the end.
    Result<bool> readInto(AVPacket& packet);
    // Gives the packet the time of showing that the container leaves out.
    Result<void> completeTime(AVPacket& packet);

    std::filesystem::path file_;
    const std::atomic<bool>* interrupt_ = nullptr;
    FormatHandle format_;
    AVStream* stream_ = nullptr;
    AVStream* video_ = nullptr;
    AVStream* audio_ = nullptr;
    AVStream* seekBy_ = nullptr;  // the stream in whose index seeks look
    MediaInfo info_;
    bool ordersByDecoding_ = false;
    bool completesTimes_ = false;
    PacketHandle packet_ = newPacket();
    std::deque<PacketHandle> ahead_;  // packets read to complete the times of earlier ones
    bool pending_ = false;            // read() returns packet_, which has been read already
};

}  // namespace tembrix
