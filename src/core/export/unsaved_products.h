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

#include "core/background/background_work.h"
#include "core/export/product_saving.h"
#include "core/export/run_folder.h"
#include "core/settings/settings.h"
#include "core/storage/video_files_manager.h"

namespace tembrix {

// A product that was saved, and the window in which its export was started, or the list window if
// that is closed.
struct SavedProduct {
    std::filesystem::path file;
    std::string window;
    bool operator==(const SavedProduct&) const = default;
};

// The finished products that are not saved yet. A product belongs to the process until the user has
// saved it or given it up, because it may have taken long to make: closing its project moves the
// question to the list window. Main thread only.
class UnsavedProducts final {
  public:
    static constexpr const char* homeWindow = "list";

    struct Finished {
        UnsavedProduct product;
        SavePanelRequest panel;
        std::string savingFailed;  // followed by the reason
        std::string savedText;     // log text, followed by the path
    };

    UnsavedProducts(Panels& panels, Scheduler& scheduler, const Texts& texts, Log& log,
                    const VideoFilesManager& library, const Settings& settings);

    // Whether there is one. The program must not end by itself meanwhile.
    Published<bool, UnsavedProducts> any{false};
    Published<std::optional<SavedProduct>, UnsavedProducts> saved;  // the last one

    // Asks where to save a product, first in the export folder of the settings. Its panel names the
    // window that asks. The completion is that of ProductSaving; it is not called after
    // leaveWindow().
    int add(Finished finished, ProductSaving::Completion completion);
    void stopWriting(int id);
    void leaveWindow(int id);
    // Removes what earlier runs left in the temporary folder, except products that were not saved
    // before the program ended: asks for them again.
    void resume(const std::filesystem::path& temporary);
    // The program ends: what waits for an answer is offered again by the next start.
    void leaveForNextStart();

  private:
    struct Waiting {
        std::shared_ptr<RunFolder> folder;
        std::string savedText;
        ProductSaving::Completion completion;  // empty if its window is closed
        ProductSaving saving;
        std::string window;
    };

    Product productOf(const Finished& finished) const;
    void ended(int id, Result<std::optional<std::filesystem::path>> result);
    void noteWhetherAny();
    bool isVideo(const std::filesystem::path& target,
                 const std::optional<std::filesystem::path>& source) const;

    Panels& panels_;
    Scheduler& scheduler_;
    const Texts& texts_;
    Log& log_;
    const VideoFilesManager& library_;
    const Settings& settings_;
    int lastId_ = 0;
    std::map<int, std::unique_ptr<Waiting>> waiting_;
    int messages_ = 0;  // open ones about lost products
    bool leaving_ = false;
    BackgroundWork work_;
};

}  // namespace tembrix
