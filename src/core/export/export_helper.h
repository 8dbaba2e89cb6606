#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/published.h"
#include "base/result.h"

#include "ports/directories.h"
#include "ports/images.h"
#include "ports/media.h"
#include "ports/movie_renderer.h"
#include "ports/panels.h"
#include "ports/process_runner.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/collections/tag_library_manager.h"
#include "core/export/cut_planning.h"
#include "core/export/cut_records.h"
#include "core/export/export_drawings.h"
#include "core/playback/video_player_manager.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// What rendering works with; one set serves the process and outlives every run.
struct ExportServices {
    VideoPlayerManager& videoManager;
    TimelineDataManager& timelineData;
    TagLibraryManager& tagLibrary;
    Media& media;
    MovieRenderer& renderer;
    PictureRenderer& pictures;
    TextMeasure& textMeasure;
    ProcessRunner& processes;
    Panels& panels;
    Scheduler& scheduler;
    Directories directories;
    const Texts& texts;
    Log& log;
    ExportDrawings* drawings = nullptr;  // without it, exports hold no drawings
};

// Renders cuts into a film or an archive of clips and saves the product where the user says. One
// run at a time; each window that exports holds its own. Main thread only.
//
// A run goes through these steps: checks and planning at once; the look into the source and the
// composing in the background; rendering in sessions; for clips the packing in the background; the
// save panel; and the copying in the background. Each step begins on the main thread, where it
// first looks whether the run was canceled.
class ExportHelper {
  public:
    // Called exactly once, on the main thread, after startExport has returned. Absent: done, or
    // canceled, which says nothing.
    using Completion = std::function<void(std::optional<Error>)>;

    // Clips that are rendered at the same time: two keep two cores busy, and more would only hold
    // more memory.
    static constexpr int sessionsAtOnce = 2;
    static constexpr double progressInterval = 0.1;  // seconds

    explicit ExportHelper(ExportServices& services);
    // Ends a run without calling its completion.
    ~ExportHelper();

    Published<float> progress{0.0F};
    int processedSegments() const { return processedSegments_; }
    bool isRunning() const { return run_ != nullptr; }

    // While a run is on, a further call does nothing and completes with nothing.
    void startExport(const std::optional<CutsExportType>& type, bool asPlaylist,
                     bool exportWithDrawings, Completion completion);
    void cancelCurrentExport();
    std::vector<ExportSegment> getSegmentsForExport(const CutsExportType& type) const;

  private:
    struct Run;
    using RunPointer = std::shared_ptr<Run>;
    using Sessions = std::vector<std::shared_ptr<MovieSession>>;

    // Runs `work` on a background thread, then `next` with its result on the main thread, unless
    // the helper is gone by then.
    template <class Work, class Next>
    void inBackground(Work work, Next next);

    std::optional<Error> check(const std::optional<CutsExportType>& type, Run& run) const;
    void beginFilm(const RunPointer& run);
    void filmEnded(const RunPointer& run, const Result<std::filesystem::path>& result);
    void beginClips(const RunPointer& run);
    void startNextClips(const RunPointer& run);
    void clipEnded(const RunPointer& run, std::size_t clip,
                   const Result<std::filesystem::path>& result);
    void clipsEnded(const RunPointer& run);
    void beginScreenshots(const RunPointer& run);
    Result<std::shared_ptr<MovieSession>> startSession(
        MovieJob job, std::function<void(Result<std::filesystem::path>)> ended);

    void save(const RunPointer& run, const std::filesystem::path& product);
    void fail(const RunPointer& run, const Error& error);
    void finish(const RunPointer& run, std::optional<Error> error);
    void stopProgressTimer() { exportProgressTimer_.reset(); }

    ExportServices& services_;
    int processedSegments_ = 0;
    RunPointer run_;
    Sessions activeExportSessions_;
    std::unique_ptr<Timer> exportProgressTimer_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
