#include "core/storage/videos_preview_manager.h"

#include <optional>
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
    : media_(media), images_(images), scheduler_(scheduler), directories_(std::move(directories)) {}

void VideosPreviewManager::makePreview(const std::filesystem::path& video, Completion completion) {
    scheduler_.background(
        Priority::userInitiated, [&media = media_, &images = images_, &scheduler = scheduler_,
                                  alive = std::weak_ptr<int>(alive_), target = previewFile(video),
                                  video, completion = std::move(completion)] {
            using Picture = std::shared_ptr<const ImageBuffer>;
            std::optional<Result<Picture>> result;
            auto frame = media.thumbnail(video, previewSeconds, previewBounds);
            if (frame) {
                // A preview that cannot be stored still shows; it is made anew next time.
                const auto png = images.encodePng(*frame);
                if (png && !alive.expired())
                    (void)replaceFile(target, *png);
                result.emplace(Picture(std::make_shared<ImageBuffer>(std::move(frame).value())));
            } else {
                result.emplace(frame.error());
            }
            if (completion)
                scheduler.onMain([completion, result = std::move(*result)] { completion(result); });
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
