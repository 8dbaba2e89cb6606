#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "base/result.h"

#include "ports/panels.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/background/background_work.h"

namespace tembrix {

// A finished product that has not been saved yet.
struct Product {
    using GoOn = std::function<bool()>;

    // Writes the product to the target, which is either replaced completely or not changed. Runs in
    // the background and stops early once `goOn` returns false. An error of the domain "product"
    // means that the product itself is lost, so that choosing another place does not help.
    std::function<Result<void>(const std::filesystem::path& target, const GoOn& goOn)> write;
    SavePanelRequest panel;
    // The message about a failure; it contains the reason.
    std::function<std::string(const std::string& reason)> failureText;
    // The reason why it must not be saved there, if there is one. Asked on the main thread.
    std::function<std::optional<Error>(const std::filesystem::path& target)> refusal = {};
};

// Returns a writer for a product that is a file. `begins` is that of replaceFileByCopy.
std::function<Result<void>(const std::filesystem::path&, const Product::GoOn&)> copyOf(
    std::filesystem::path file, std::string missingText,
    std::function<void(const std::filesystem::path&)> begins = {});

// Saves a product at a place chosen by the user: asks, writes in the background, and after a
// failure shows the reason and asks again until the user closes the panel. Works for products of
// any kind. Main thread only. Destroying it ends it without a completion.
class ProductSaving {
  public:
    // Called exactly once with the path of the saved product, with nothing if the user gave up, or
    // with an error if the product is lost.
    using Completion = std::function<void(Result<std::optional<std::filesystem::path>>)>;

    ProductSaving(Panels& panels, Scheduler& scheduler, const Texts& texts);
    ProductSaving(const ProductSaving&) = delete;
    ProductSaving& operator=(const ProductSaving&) = delete;

    void begin(Product product, Completion completion);
    // Stops the writing and asks again. Only closing the panel gives the product up.
    void stopWriting();
    bool isWriting() const { return writing_.has_value(); }
    // Asks over another window, because the present one closes.
    void moveTo(const std::string& window);

  private:
    void ask();
    void write(const std::filesystem::path& target);
    void startAt(const std::filesystem::path& target);
    void explain(const std::filesystem::path& target, const Error& error);
    void written(const std::filesystem::path& target, const Result<void>& result);
    void end(Result<std::optional<std::filesystem::path>> result);

    Panels& panels_;
    const Texts& texts_;
    Product product_;
    Completion completion_;
    std::optional<std::stop_source> writing_;  // while it is written
    BackgroundWork work_;
};

}  // namespace tembrix
