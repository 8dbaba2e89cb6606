#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/result.h"

#include "ports/scheduler.h"

#include "core/background/background_work.h"
#include "core/export/cut_composition.h"
#include "core/export/cut_records.h"
#include "core/export/export_drawings.h"
#include "core/export/export_services.h"
#include "core/export/product_saving.h"
#include "core/export/render_queue.h"
#include "core/export/run_folder.h"

namespace tembrix {

enum class ExportState { idle, preparing, rendering, packing, saving };

// How a run speaks of its product.
struct ProductWords {
    std::string panelTitle;
    std::string defaultName;
    std::string extension;     // without dot
    std::string makingFailed;  // before the reason
    std::string savingFailed;  // before the reason
    std::string saved;         // in the log, before the place
};

// One export from its first step to its end. A run prepares its jobs in the background, renders
// them, packs clips into an archive, and places the product where the user says. Each step begins
// on the main thread, where it first checks whether the run was canceled. A run has a temporary
// folder of its own, so that runs of several windows do not disturb each other. Main thread only.
// Destroying a run ends it without a completion.
class ExportRun {
  public:
    // Called exactly once, on the main thread, after the call that began the run has returned.
    // Absent: the product is saved, or the user canceled.
    using Completion = std::function<void(std::optional<Error>)>;

    static constexpr double progressInterval = 0.1;  // seconds

    ExportRun(ExportServices& services, ProductWords words, std::function<void(float)> progressed,
              Completion completion);
    ~ExportRun();
    ExportRun(const ExportRun&) = delete;
    ExportRun& operator=(const ExportRun&) = delete;

    // One of the two begins the run. The snapshot's folder is set by the run.
    void exportCuts(ExportSnapshot snapshot);
    void exportDrawings(std::vector<ExportDrawing> drawings,
                        std::optional<std::filesystem::path> drawingsFolder);
    void cancel();

    ExportState state() const { return state_; }
    float progress() const { return progress_; }  // 0 to 1; never decreases
    int processedSegments() const { return queue_.ended(); }

  private:
    struct Prepared;

    void render(Prepared prepared);
    void rendered(const RenderQueue::Ending& ending);
    void pack(const std::vector<std::filesystem::path>& clips);
    void packed(const Result<std::filesystem::path>& archive);
    void save(const std::filesystem::path& product);
    void advance(float progress);
    bool isCanceled() const { return stop_.stop_requested(); }
    void fail(const Error& error);
    void end(std::optional<Error> error);

    ExportServices& services_;
    const ProductWords words_;
    std::function<void(float)> progressed_;
    Completion completion_;
    ExportState state_ = ExportState::preparing;
    ExportMode mode_ = ExportMode::film;
    std::size_t cuts_ = 0;
    float progress_ = 0;
    std::stop_source stop_;  // background work asks it too
    std::shared_ptr<RunFolder> folder_;
    RenderQueue queue_;
    std::unique_ptr<Timer> progressTimer_;
    ProductSaving saving_;
    BackgroundWork work_;
};

}  // namespace tembrix
