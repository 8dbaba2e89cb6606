#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "base/image.h"

#include "ports/directories.h"
#include "ports/images.h"
#include "ports/media.h"
#include "ports/scheduler.h"

#include "core/background/background_work.h"

namespace tembrix {

// Preview pictures of videos: one PNG each in the temporary folder, where they may be deleted at
// any time.
class VideosPreviewManager {
  public:
    using Completion = std::function<void(Result<std::shared_ptr<const ImageBuffer>>)>;

    VideosPreviewManager(Media& media, ImageCodec& images, Scheduler& scheduler,
                         Directories directories);

    // Decodes the frame at 1.0 seconds in the background, scaled to at most 200 by 200, and stores
    // it. Completes on the main thread, unless the manager is destroyed first.
    void makePreview(const std::filesystem::path& video, Completion completion);
    std::filesystem::path previewFile(const std::filesystem::path& video) const;

    static std::string thumbnailName(const std::filesystem::path& video);
    static std::string uniqueName(const std::filesystem::path& folder, const std::string& name);
    static bool isEmptyFile(const std::filesystem::path& file);

  private:
    Media& media_;
    ImageCodec& images_;
    Directories directories_;
    BackgroundWork work_;
};

}  // namespace tembrix
