#include "core/export/unsaved_products.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "base/files.h"

#include "core/export/export_errors.h"
#include "core/records/video_records.h"

namespace tembrix {

namespace fs = std::filesystem;

UnsavedProducts::UnsavedProducts(Panels& panels, Scheduler& scheduler, const Texts& texts, Log& log,
                                 const VideoFilesManager& library, const Settings& settings)
    : panels_(panels),
      scheduler_(scheduler),
      texts_(texts),
      log_(log),
      library_(library),
      settings_(settings) {}

int UnsavedProducts::add(Finished finished, ProductSaving::Completion completion) {
    const int id = ++lastId_;
    const auto waiting = waiting_.emplace(
        id, new Waiting{std::move(finished.folder), std::move(finished.savedText),
                        std::move(completion), ProductSaving(panels_, scheduler_, texts_),
                        finished.product.panel.window});
    finished.product.refusal = [this, source = std::move(finished.source)](
                                   const fs::path& target) -> std::optional<Error> {
        if (isVideo(target, source))
            return plainError(texts_.text("exportSaveOverVideo"));
        return std::nullopt;
    };
    finished.product.panel.folder = pathFromText(settings_.values->exportFolder);
    any.set(true);
    waiting.first->second->saving.begin(
        std::move(finished.product),
        [this, id](Result<std::optional<fs::path>> result) { ended(id, std::move(result)); });
    return id;
}

// A film that replaces a video destroys the match that the user works on.
bool UnsavedProducts::isVideo(const fs::path& target, const std::optional<fs::path>& source) const {
    std::error_code ignored;
    if (!fs::exists(target, ignored))
        return false;
    if (source && fs::equivalent(target, *source, ignored))
        return true;
    const auto& videos = library_.videosData();
    return std::any_of(videos.begin(), videos.end(), [&](const VideosData& video) {
        const auto file = library_.resolveVideoURL(video.bookmark);
        return file && fs::equivalent(target, *file, ignored);
    });
}

void UnsavedProducts::stopWriting(int id) {
    if (const auto found = waiting_.find(id); found != waiting_.end())
        found->second->saving.stopWriting();
}

void UnsavedProducts::leaveWindow(int id) {
    const auto found = waiting_.find(id);
    if (found == waiting_.end())
        return;
    found->second->completion = nullptr;
    found->second->window = homeWindow;
    found->second->saving.moveTo(homeWindow);
}

void UnsavedProducts::ended(int id, Result<std::optional<fs::path>> result) {
    const auto over = std::move(waiting_.extract(id).mapped());
    if (result && *result)
        log_.line(over->savedText + pathText(**result));
    else if (result)
        over->folder->keep();
    // The files may be large. The main thread does not wait until they are removed.
    scheduler_.background(Priority::utility,
                          [folder = std::move(over->folder)]() mutable { folder.reset(); });
    any.set(!waiting_.empty());
    if (result && *result)
        saved.set(SavedProduct{**result, over->window});
    if (over->completion)
        over->completion(std::move(result));
    else if (!result)
        panels_.alert(texts_.text("exportNotSavedTitle"), result.error().text, {}, homeWindow);
}

}  // namespace tembrix
