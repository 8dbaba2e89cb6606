#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/date.h"
#include "base/result.h"

#include "ports/scheduler.h"

#include "core/background/background_work.h"
#include "core/export/cut_composition.h"
#include "core/export/cut_records.h"
#include "core/export/export_drawings.h"
#include "core/export/export_services.h"
#include "core/export/render_queue.h"
#include "core/export/run_folder.h"

namespace tembrix {

enum class ExportState { idle, preparing, rendering, packing, saving };

// How far an export is.
struct ExportStatus {
    ExportState state = ExportState::idle;
    float progress = 0;  // 0 to 1; never decreases
    int cutsDone = 0;
    int cuts = 0;                       // 0: not counted
    std::optional<double> secondsLeft;  // of the rendering, once it can be estimated
    bool operator==(const ExportStatus&) const = default;
};

// The texts about the product of a run.
struct ProductWords {
    std::string panelTitle;
    std::string defaultName;
    std::string extension;     // without dot
    std::string makingFailed;  // followed by the reason
    std::string savingFailed;  // followed by the reason
    std::string saved;         // log text, followed by the path
};

// One export from start to end. A run prepares its jobs in the background, renders them, packs
// clips into an archive, and saves the product where the user chooses. Each step starts on the main
// thread and first checks whether the run was canceled. Each run has its own temporary folder, so
// that runs of different windows do not interfere. Main thread only. Destroying a run ends it
// without a completion; a finished product is then still offered for saving.
class ExportRun {
  public:
    // Called exactly once, on the main thread, after the call that started the run has returned.
    // Without an error the product was saved or the user canceled.
    using Completion = std::function<void(std::optional<Error>)>;

    static constexpr double progressInterval = 0.1;  // seconds

    // `window` is the name of the window over which the run asks.
    ExportRun(ExportServices& services, ProductWords words, std::string window,
              std::function<void(const ExportStatus&)> changed, Completion completion);
    ~ExportRun();
    ExportRun(const ExportRun&) = delete;
    ExportRun& operator=(const ExportRun&) = delete;

    // Start a run with one of these. The run sets the folder of the snapshot.
    void exportCuts(ExportSnapshot snapshot);
    void exportDrawings(std::vector<ExportDrawing> drawings,
                        std::optional<std::filesystem::path> drawingsFolder);
    // While the product is being saved, this only stops the writing: the run asks again, and the
    // user gives the product up by closing that panel.
    void cancel();
    // The window of the run closes. A finished product is still offered for saving, and a copy that
    // has begun goes on.
    void leaveProduct();

    ExportState state() const { return state_; }
    ExportStatus status() const;
    int processedSegments() const { return queue_.ended(); }

  private:
    struct Prepared;

    void render(Prepared prepared);
    void rendered(const RenderQueue::Ending& ending);
    void pack(const std::vector<std::filesystem::path>& clips);
    void packed(const Result<std::filesystem::path>& archive);
    void save(const std::filesystem::path& product);
    void advance(float progress);
    void enter(ExportState state);
    int cutsDone() const;
    bool isCanceled() const { return stop_.stop_requested(); }
    void fail(const Error& error);
    void end(std::optional<Error> error);

    ExportServices& services_;
    const ProductWords words_;
    const std::string window_;
    const std::optional<std::filesystem::path> source_;
    std::function<void(const ExportStatus&)> changed_;
    Completion completion_;
    ExportState state_ = ExportState::preparing;
    ExportMode mode_ = ExportMode::film;
    std::size_t cuts_ = 0;
    std::vector<double> cutEnds_;  // in seconds of the film
    float progress_ = 0;
    Date renderingSince_;
    std::optional<Date> expectedEnd_;  // of the rendering
    std::stop_source stop_;            // also checked by background work
    std::shared_ptr<RunFolder> folder_;
    RenderQueue queue_;
    std::unique_ptr<Timer> progressTimer_;
    std::optional<int> product_;  // its number among the unsaved products
    BackgroundWork work_;
};

}  // namespace tembrix
