#include "core/export/unsaved_products.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

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
      settings_(settings),
      work_(scheduler) {}

int UnsavedProducts::add(Finished finished, ProductSaving::Completion completion) {
    const int id = ++lastId_;
    UnsavedProduct& unsaved = finished.product;
    unsaved.folder->keep();
    noteUnsavedProduct(unsaved);
    Product product = productOf(finished);
    const auto waiting = waiting_.emplace(
        id,
        new Waiting{std::move(unsaved.folder), std::move(finished.savedText), std::move(completion),
                    ProductSaving(panels_, scheduler_, texts_), product.panel.window});
    any.set(true);
    waiting.first->second->saving.begin(
        std::move(product),
        [this, id](Result<std::optional<fs::path>> result) { ended(id, std::move(result)); });
    return id;
}

Product UnsavedProducts::productOf(const Finished& finished) const {
    const fs::path folder = finished.product.folder->path();
    const auto copy =
        copyOf(finished.product.file, texts_.text("exportErrorProductMissing"),
               [folder](const fs::path& unfinished) { noteUnfinishedCopy(folder, unfinished); });
    Product product;
    product.write = [copy, folder](const fs::path& target,
                                   const Product::GoOn& goOn) -> Result<void> {
        // The run's own folder is removed in the end, so nothing can be saved there.
        std::error_code ignored;
        if (fs::equivalent(target.parent_path(), folder, ignored))
            return Error{"file", EACCES, pathText(target)};
        auto outcome = copy(target, goOn);
        forgetUnfinishedCopy(folder);
        return outcome;
    };
    product.panel = finished.panel;
    product.panel.folder = pathFromText(settings_.values->exportFolder);
    product.failureText = [prefix = finished.savingFailed](const std::string& reason) {
        return prefix + reason;
    };
    product.refusal =
        [this, source = finished.product.source](const fs::path& target) -> std::optional<Error> {
        if (isVideo(target, source))
            return plainError(texts_.text("exportSaveOverVideo"));
        return std::nullopt;
    };
    return product;
}

void UnsavedProducts::resume(const fs::path& temporary) {
    work_.run(
        Priority::utility, [temporary] { return removeAbandonedRunFolders(temporary); },
        [this](std::vector<UnsavedProduct> found) {
            for (auto& product : found) {
                SavePanelRequest panel{texts_.text("exportSaveUnsavedTitle"),
                                       pathText(product.file.filename()),
                                       pathText(product.file.extension()).substr(1), homeWindow};
                add({std::move(product), std::move(panel),
                     texts_.text("exportNotSavedTitle") + ": ",
                     texts_.text("fullControlExportFilmSuccess") + " "},
                    nullptr);
            }
        });
}

// A copy that is being written may still end in time.
void UnsavedProducts::leaveForNextStart() {
    leaving_ = true;
    std::erase_if(waiting_, [](const auto& one) { return !one.second->saving.isWriting(); });
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
    const bool given = result && !*result;  // up; the files stay until the next start
    if (!given || !leaving_)
        forgetUnsavedProduct(over->folder->path());
    if (!given)
        over->folder->keep(false);
    if (result && *result)
        log_.line(over->savedText + pathText(**result));
    // The files may be large. The main thread does not wait until they are removed.
    scheduler_.background(Priority::utility,
                          [folder = std::move(over->folder)]() mutable { folder.reset(); });
    const bool tells = !result && !over->completion;
    messages_ += tells ? 1 : 0;
    noteWhetherAny();
    if (result && *result)
        saved.set(SavedProduct{**result, over->window});
    if (over->completion)
        over->completion(std::move(result));
    else if (tells)
        panels_.alert(texts_.text("exportNotSavedTitle"), result.error().text, work_.guard([this] {
            --messages_;
            noteWhetherAny();
        }),
                      homeWindow);
}

void UnsavedProducts::noteWhetherAny() {
    any.set(!waiting_.empty() || messages_ > 0);
}

}  // namespace tembrix
