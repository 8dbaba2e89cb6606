#include "core/export/product_saving.h"

#include <system_error>
#include <utility>

#include "base/files.h"

#include "core/export/export_errors.h"

namespace tembrix {

namespace fs = std::filesystem;

std::function<Result<void>(const fs::path&, const Product::GoOn&)> copyOf(
    fs::path file, std::string missingText, std::function<void(const fs::path&)> begins) {
    return
        [file = std::move(file), missingText = std::move(missingText), begins = std::move(begins)](
            const fs::path& target, const Product::GoOn& goOn) -> Result<void> {
            std::error_code failure;
            if (!fs::exists(file, failure))
                return Error{"product", 1, missingText};
            return replaceFileByCopy(target, file, goOn, begins);
        };
}

ProductSaving::ProductSaving(Panels& panels, Scheduler& scheduler, const Texts& texts)
    : panels_(panels), texts_(texts), work_(scheduler) {}

void ProductSaving::begin(Product product, Completion completion) {
    product_ = std::move(product);
    completion_ = std::move(completion);
    ask();
}

void ProductSaving::stopWriting() {
    if (writing_)
        writing_->request_stop();
}

void ProductSaving::moveTo(const std::string& window) {
    product_.panel.window = window;
    if (writing_)
        return;
    // The panel or the message closes with its window, which is no answer of the user.
    work_.cancel();
    work_.onMain([this] { ask(); });
}

void ProductSaving::ask() {
    panels_.save(product_.panel, work_.guard([this](const std::optional<fs::path>& target) {
        if (target)
            write(*target);
        else
            end(std::optional<fs::path>());
    }));
}

void ProductSaving::write(const fs::path& target) {
    if (const auto refusal = product_.refusal ? product_.refusal(target) : std::nullopt)
        return explain(target, *refusal);
    writing_.emplace();
    work_.run(
        Priority::userInitiated,
        // stopWriting() stops the writing but still reports its end; the destructor stops it
        // without a report.
        [writer = product_.write, target,
         stopped = writing_->get_token()](const std::stop_token& stop) {
            return writer(target,
                          [&] { return !stopped.stop_requested() && !stop.stop_requested(); });
        },
        [this, target](const Result<void>& result) { written(target, result); });
}

void ProductSaving::written(const fs::path& target, const Result<void>& result) {
    const bool stopped = writing_->stop_requested();
    writing_.reset();
    if (result)
        return end(std::optional(target));
    if (result.error().domain == "product")
        return end(result.error());
    if (!stopped)
        return explain(target, result.error());
    startAt(target);
    ask();
}

// The next panel starts where the user saved last.
void ProductSaving::startAt(const fs::path& target) {
    product_.panel.defaultName = pathText(target.filename());
    product_.panel.folder = target.parent_path();
}

void ProductSaving::explain(const fs::path& target, const Error& error) {
    startAt(target);
    panels_.alert(texts_.text("exportNotSavedTitle"),
                  product_.failureText(describeSaving(error, texts_)) + "\n\n" +
                      texts_.text("exportNotSavedHint"),
                  work_.guard([this] { ask(); }), product_.panel.window);
}

// The completion may destroy this object.
void ProductSaving::end(Result<std::optional<fs::path>> result) {
    std::exchange(completion_, nullptr)(std::move(result));
}

}  // namespace tembrix
