#pragma once

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ports/media.h"

namespace tembrix {

// Media files that exist only by name. Each frame has one color, which encodes its number.
class FakeMedia final : public Media {
  public:
    // A video of `seconds` with frames at a constant rate.
    void add(const std::filesystem::path& file, double seconds, Size size = {64, 36},
             double framesPerSecond = 30, bool hasAudio = true) {
        MediaInfo info;
        info.duration = seconds;
        info.size = size;
        info.frameRate = framesPerSecond;
        info.hasVideo = true;
        info.hasAudio = hasAudio;
        add(file, info);
    }
    void add(const std::filesystem::path& file, const MediaInfo& info) {
        const std::lock_guard lock(mutex_);
        files_[file] = info;
    }
    void remove(const std::filesystem::path& file) {
        const std::lock_guard lock(mutex_);
        files_.erase(file);
    }
    // The times of all requested pictures, in order.
    std::vector<double> framesTaken() const {
        const std::lock_guard lock(mutex_);
        return framesTaken_;
    }
    // The number of the frame that `image` shows.
    static int frameNumber(const ImageBuffer& image) {
        const auto* p = image.pixels.data();
        return p[0] | p[1] << 8 | p[2] << 16;
    }

    Result<MediaInfo> probe(const std::filesystem::path& file) override {
        const std::lock_guard lock(mutex_);
        const auto found = files_.find(file);
        if (found == files_.end())
            return Error{"media", 1, "No such file: " + file.string()};
        return found->second;
    }
    Result<FramePlace> framePlace(const std::filesystem::path& file, double seconds) override {
        const auto number = indexAt(file, seconds);
        if (!number)
            return number.error();
        const double start = *number / rate(*probe(file));
        return FramePlace{start, start};
    }
    Result<ImageBuffer> frame(const std::filesystem::path& file, double seconds) override {
        return thumbnail(file, seconds, {1e9, 1e9});
    }
    Result<ImageBuffer> thumbnail(const std::filesystem::path& file, double seconds,
                                  Size bounds) override {
        const auto number = indexAt(file, seconds);
        if (!number)
            return number.error();
        const Size size = probe(file)->size;
        const double scale =
            std::min({1.0, bounds.width / size.width, bounds.height / size.height});
        ImageBuffer image(std::max(1, static_cast<int>(std::lround(size.width * scale))),
                          std::max(1, static_cast<int>(std::lround(size.height * scale))));
        for (std::size_t i = 0; i < image.pixels.size(); i += 4) {
            for (int byte = 0; byte < 3; ++byte)
                image.pixels[i + static_cast<std::size_t>(byte)] =
                    static_cast<std::uint8_t>(*number >> (8 * byte));
            image.pixels[i + 3] = 255;
        }
        const std::lock_guard lock(mutex_);
        framesTaken_.push_back(seconds);
        return image;
    }

  private:
    static double rate(const MediaInfo& info) { return info.frameRate > 0 ? info.frameRate : 30; }

    Result<int> indexAt(const std::filesystem::path& file, double seconds) {
        const auto info = probe(file);
        if (!info)
            return info.error();
        if (!info->hasVideo)
            return Error{"media", 3, "No video in the file: " + file.string()};
        const double frames = std::max(1.0, std::round(info->duration * rate(*info)));
        const double index = std::floor((seconds + frameTolerance) * rate(*info));
        return static_cast<int>(std::clamp(index, 0.0, frames - 1));
    }

    mutable std::mutex mutex_;
    std::map<std::filesystem::path, MediaInfo> files_;
    std::vector<double> framesTaken_;
};

}  // namespace tembrix
