#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "base/log.h"
#include "base/published.h"
#include "base/result.h"

#include "ports/panels.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/export/product_saving.h"
#include "core/export/run_folder.h"
#include "core/storage/video_files_manager.h"

namespace tembrix {

// The finished products that are not saved yet. A product belongs to the process until the user has
// saved it or given it up, because it may have taken long to make: closing its project moves the
// question to the list window. Main thread only.
class UnsavedProducts final {
  public:
    static constexpr const char* homeWindow = "list";

    struct Finished {
        Product product;
        std::shared_ptr<RunFolder> folder;            // released in the end
        std::optional<std::filesystem::path> source;  // the video that it was made from
        std::string savedText;                        // log text, followed by the path
    };

    UnsavedProducts(Panels& panels, Scheduler& scheduler, const Texts& texts, Log& log,
                    const VideoFilesManager& library);

    // Whether there is one. The program must not end by itself meanwhile.
    Published<bool, UnsavedProducts> any{false};

    // Asks where to save a product. Its panel names the window that asks. The completion is that of
    // ProductSaving; it is not called after leaveWindow().
    int add(Finished finished, ProductSaving::Completion completion);
    void stopWriting(int id);
    void leaveWindow(int id);

  private:
    struct Waiting {
        std::shared_ptr<RunFolder> folder;
        std::string savedText;
        ProductSaving::Completion completion;  // empty if its window is closed
        ProductSaving saving;
    };

    void ended(int id, Result<std::optional<std::filesystem::path>> result);
    bool isVideo(const std::filesystem::path& target,
                 const std::optional<std::filesystem::path>& source) const;

    Panels& panels_;
    Scheduler& scheduler_;
    const Texts& texts_;
    Log& log_;
    const VideoFilesManager& library_;
    int lastId_ = 0;
    std::map<int, std::unique_ptr<Waiting>> waiting_;
};

}  // namespace tembrix
