#include "core/export/product_saving.h"

#include <system_error>
#include <utility>

#include "base/files.h"

#include "core/export/export_errors.h"

namespace tembrix {

namespace fs = std::filesystem;

std::function<Result<void>(const fs::path&, const Product::GoOn&)> copyOf(fs::path file,
                                                                          std::string missingText) {
    return [file = std::move(file), missingText = std::move(missingText)](
               const fs::path& target, const Product::GoOn& goOn) -> Result<void> {
        std::error_code failure;
        if (!fs::exists(file, failure))
            return Error{"product", 1, missingText};
        return replaceFileByCopy(target, file, goOn);
    };
}

ProductSaving::ProductSaving(Panels& panels, Scheduler& scheduler, const Texts& texts)
    : panels_(panels), texts_(texts), work_(scheduler) {}

void ProductSaving::begin(Product product, Completion completion) {
    product_ = std::move(product);
    completion_ = std::move(completion);
    ask();
}

void ProductSaving::cancel() {
    canceled_ = true;
    writing_.request_stop();
}

void ProductSaving::ask() {
    if (canceled_)
        return end(std::optional<fs::path>());
    panels_.save(product_.panel, work_.guard([this](const std::optional<fs::path>& target) {
        if (!target || canceled_)
            return end(std::optional<fs::path>());
        write(*target);
    }));
}

void ProductSaving::write(const fs::path& target) {
    work_.run(
        Priority::userInitiated,
        // cancel() stops the writing but still reports its end; the destructor stops it without a
        // report.
        [writer = product_.write, target,
         canceled = writing_.get_token()](const std::stop_token& stop) {
            return writer(target,
                          [&] { return !canceled.stop_requested() && !stop.stop_requested(); });
        },
        [this, target](const Result<void>& result) { written(target, result); });
}

void ProductSaving::written(const fs::path& target, const Result<void>& result) {
    if (result)
        return end(std::optional(target));
    if (canceled_)
        return end(std::optional<fs::path>());
    if (result.error().domain == "product")
        return end(result.error());
    product_.panel.defaultName = pathText(target.filename());
    panels_.alert(texts_.text("exportNotSavedTitle"),
                  product_.failureText(describeSaving(result.error(), texts_)) + "\n\n" +
                      texts_.text("exportNotSavedHint"),
                  work_.guard([this] { ask(); }));
}

// The completion may destroy this object.
void ProductSaving::end(Result<std::optional<fs::path>> result) {
    std::exchange(completion_, nullptr)(std::move(result));
}

}  // namespace tembrix
