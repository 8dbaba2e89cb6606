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

// Looks into media files with the FFmpeg libraries. The files used last stay open, so that asking
// the same file again, as scrubbing does, costs no opening.
class FfmpegMedia final : public Media {
  public:
    FfmpegMedia();
    ~FfmpegMedia() override;

    Result<MediaInfo> probe(const std::filesystem::path& file) override;
    Result<double> frameTime(const std::filesystem::path& file, double seconds) override;
    Result<ImageBuffer> frame(const std::filesystem::path& file, double seconds) override;
    Result<ImageBuffer> thumbnail(const std::filesystem::path& file, double seconds,
                                  Size bounds) override;

  private:
    // Tells whether a path still leads to the same content.
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
    // Takes the file out of the open ones, or opens it; give it back with keep().
    Result<Entry> take(const std::filesystem::path& file);
    void keep(Entry entry);

    std::mutex mutex_;
    std::vector<Entry> open_;  // the last used at the end
};

}  // namespace tembrix
