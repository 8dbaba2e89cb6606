#include "core/storage/videos_preview_manager.h"

#include <stop_token>
#include <system_error>
#include <utility>

#include "base/files.h"
#include "base/geometry.h"

#include "core/storage/data_layout.h"

namespace tembrix {

namespace {

constexpr double previewSeconds = 1.0;
constexpr Size previewBounds{200, 200};

}  // namespace

VideosPreviewManager::VideosPreviewManager(Media& media, ImageCodec& images, Scheduler& scheduler,
                                           Directories directories)
    : media_(media), images_(images), directories_(std::move(directories)), work_(scheduler) {}

void VideosPreviewManager::makePreview(const std::filesystem::path& video, Completion completion) {
    using Picture = std::shared_ptr<const ImageBuffer>;
    work_.run(
        Priority::userInitiated,
        [&media = media_, &images = images_, target = previewFile(video),
         video](const std::stop_token& stop) -> Result<Picture> {
            auto frame = media.thumbnail(video, previewSeconds, previewBounds);
            if (!frame)
                return frame.error();
            // A preview that cannot be stored is shown anyway and created again next time.
            const auto png = images.encodePng(*frame);
            if (png && !stop.stop_requested())
                (void)replaceFile(target, *png);
            return Picture(std::make_shared<ImageBuffer>(std::move(frame).value()));
        },
        [completion = std::move(completion)](Result<Picture> result) {
            if (completion)
                completion(std::move(result));
        });
}

std::filesystem::path VideosPreviewManager::previewFile(const std::filesystem::path& video) const {
    return directories_.temporary / layout::previewFolder / pathFromText(thumbnailName(video));
}

std::string VideosPreviewManager::thumbnailName(const std::filesystem::path& video) {
    std::string name = pathText(video.filename());
    const auto dot = name.rfind('.');
    if (dot == std::string::npos)
        return name;
    return name.replace(dot, 1, "@$@") + ".png";
}

std::string VideosPreviewManager::uniqueName(const std::filesystem::path& folder,
                                             const std::string& name) {
    const auto isFree = [&](const std::string& candidate) {
        std::error_code error;
        return !std::filesystem::exists(
            std::filesystem::symlink_status(folder / pathFromText(candidate), error));
    };
    if (isFree(name))
        return name;
    const auto path = pathFromText(name);
    const std::string stem = pathText(path.stem());
    const std::string extension = pathText(path.extension());
    for (int number = 1;; ++number) {
        const std::string candidate = stem + " (" + std::to_string(number) + ")" + extension;
        if (isFree(candidate))
            return candidate;
    }
}

bool VideosPreviewManager::isEmptyFile(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size == 0;
}

}  // namespace tembrix
