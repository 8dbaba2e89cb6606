#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "base/result.h"

#include "adapters/ffmpeg/av_handles.h"

namespace tembrix {

// The format of a film.
struct FilmFormat {
    int width = 0;
    int height = 0;
    int framesPerSecond = 30;
    AVColorSpace matrix = AVCOL_SPC_BT709;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    int sampleRate = 0;  // 0: no sound
    int channels = 2;
};

// Writes an MPEG-4 file of H.264 pictures and AAC sound under a temporary name and renames it when
// it is complete. Unless finish() succeeds, no file remains. Must be used on one thread.
class FilmWriter {
  public:
    static Result<std::unique_ptr<FilmWriter>> open(const std::filesystem::path& target,
                                                    const FilmFormat& format);
    ~FilmWriter();
    FilmWriter(const FilmWriter&) = delete;
    FilmWriter& operator=(const FilmWriter&) = delete;

    // Adds the next picture of the film.
    Result<void> addPicture(FrameHandle picture);
    // Adds the next `count` samples of each channel; at most soundFrame(), fewer only at the end.
    Result<void> addSound(const float* const* samples, int count);
    int soundFrame() const { return audio_ ? audio_->frame_size : 0; }
    // Finishes both streams, writes the file to the disk and renames it, unless `stop` is true by
    // then.
    Result<void> finish(const std::atomic<bool>& stop);

  private:
    FilmWriter() = default;
    Result<void> openVideo(const FilmFormat& format);
    Result<void> openAudio(const FilmFormat& format);
    Result<void> drain(AVCodecContext& encoder, AVStream& stream);

    struct FreeOutput {
        void operator()(AVFormatContext* format) const {
            avio_closep(&format->pb);
            avformat_free_context(format);
        }
    };

    std::filesystem::path target_;
    std::filesystem::path temporary_;
    std::unique_ptr<AVFormatContext, FreeOutput> format_;
    CodecHandle video_;
    CodecHandle audio_;
    AVStream* videoStream_ = nullptr;
    AVStream* audioStream_ = nullptr;
    PacketHandle packet_ = newPacket();
    std::int64_t pictures_ = 0;
    std::int64_t samples_ = 0;
    bool finished_ = false;
};

}  // namespace tembrix
