#pragma once

#include <atomic>
#include <cstdint>
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

// An opened media file: its packets on the user's time axis, where 0 is the first frame shown.
// Belongs to one thread at a time.
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
    // The stream that read() gives packets of.
    AVStream* stream() const { return stream_; }
    // The pixel shape of the video: width by height of one pixel.
    AVRational pixelAspect() const;
    // Packets carry no time of showing, only their order of decoding. Their frames then show at the
    // decoding times in ascending order.
    bool ordersByDecoding() const { return ordersByDecoding_; }

    // Seconds on the user's time axis.
    double seconds(std::int64_t timestamp) const;
    // When the packet's frame shows, or when it is decoded if ordersByDecoding().
    double time(const AVPacket& packet) const;

    // Goes to a place from which the frame of `seconds` can be decoded: the next packet is a key
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
    // Goes to the key frame before `seconds` by the container's index, and reads it into packet_;
    // false if nothing can be read there.
    bool startAt(double seconds);

    std::filesystem::path file_;
    const std::atomic<bool>* interrupt_ = nullptr;
    FormatHandle format_;
    AVStream* stream_ = nullptr;
    AVStream* video_ = nullptr;
    AVStream* audio_ = nullptr;
    AVStream* seekBy_ = nullptr;  // the stream in whose index seeks look
    MediaInfo info_;
    bool ordersByDecoding_ = false;
    PacketHandle packet_ = newPacket();
    bool pending_ = false;  // packet_ is read already and is the next to give
};

}  // namespace tembrix
