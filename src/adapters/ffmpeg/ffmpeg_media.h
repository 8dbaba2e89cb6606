#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include "base/geometry.h"
#include "base/image.h"

#include "ports/media.h"

namespace tembrix {

struct VideoFile;

// Reads media files with the FFmpeg libraries. The files used last stay open, so that repeated
// calls for the same file, as in scrubbing, do not open it again.
class FfmpegMedia final : public Media {
  public:
    FfmpegMedia();
    ~FfmpegMedia() override;

    Result<MediaInfo> probe(const std::filesystem::path& file) override;
    Result<FramePlace> framePlace(const std::filesystem::path& file, double seconds) override;
    Result<ImageBuffer> frame(const std::filesystem::path& file, double seconds) override;
    Result<ImageBuffer> thumbnail(const std::filesystem::path& file, double seconds,
                                  Size bounds) override;

  private:
    // Identifies the content of a file, so that a replaced file is recognized.
    struct Identity {
        std::filesystem::path file;
        std::uintmax_t size = 0;
        std::filesystem::file_time_type changed;
        bool operator==(const Identity&) const = default;
    };
    struct Entry {
        Identity identity;
        std::unique_ptr<VideoFile> video;
    };
    // Returns the entry of an open file or opens the file. The entry is removed from `open_`;
    // keep() adds it again.
    Result<Entry> take(const std::filesystem::path& file);
    void keep(Entry entry);

    std::mutex mutex_;
    std::vector<Entry> open_;  // ordered by last use, the latest at the end
};

}  // namespace tembrix
