#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/log.h"
#include "base/published.h"

#include "ports/directories.h"
#include "ports/images.h"
#include "ports/media.h"
#include "ports/movie_renderer.h"
#include "ports/panels.h"
#include "ports/process_runner.h"
#include "ports/scheduler.h"

#include "core/export/cut_planning.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

// What rendering works with; one set serves the process.
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
};

// Renders cuts into a film or an archive of clips and saves the product where the user says. One
// run at a time; each window that exports holds its own. Main thread only.
class ExportHelper {
  public:
    // Called exactly once, on the main thread. Absent: done, or cancelled, which says nothing.
    using Completion = std::function<void(std::optional<Error>)>;

    explicit ExportHelper(ExportServices& services);
    ~ExportHelper();

    Published<float> progress{0.0F};
    int processedSegments() const { return processedSegments_; }

    void startExport(const std::optional<CutsExportType>& type, bool asPlaylist,
                     bool exportWithDrawings, Completion completion);
    void cancelCurrentExport();
    std::vector<ExportSegment> getSegmentsForExport(const CutsExportType& type) const;

  private:
    struct Run;
    ExportServices& services_;
    int processedSegments_ = 0;
    bool isExportCancelled_ = false;
    std::mutex sessionsLock_;
    std::vector<std::shared_ptr<MovieSession>> activeExportSessions_;
    std::unique_ptr<Timer> exportProgressTimer_;
    std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tembrix
