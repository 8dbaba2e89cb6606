#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/published.h"
#include "base/result.h"

#include "core/background/lifetime.h"
#include "core/export/cut_composition.h"
#include "core/export/cut_records.h"
#include "core/export/export_plan.h"
#include "core/export/export_run.h"
#include "core/export/export_services.h"

namespace tembrix {

// The exports of one window: plans them from the open project and runs one at a time. Exports of
// different windows are independent. Main thread only.
class ExportHelper {
  public:
    using Completion = ExportRun::Completion;

    // `window` is the name of the window over which the runs ask.
    explicit ExportHelper(ExportServices& services, std::string window = {});
    // Ends a run without calling its completion. A finished product is still offered for saving.
    ~ExportHelper();
    ExportHelper(const ExportHelper&) = delete;
    ExportHelper& operator=(const ExportHelper&) = delete;

    Published<float, ExportHelper> progress{0.0F};
    Published<ExportStatus, ExportHelper> status;
    int processedSegments() const { return run_ ? run_->processedSegments() : processedSegments_; }
    bool isRunning() const { return run_ != nullptr; }
    ExportState state() const { return run_ ? run_->state() : ExportState::idle; }

    // During a run, another call does nothing and its completion reports no error.
    void startExport(const std::optional<CutsExportType>& type, bool asPlaylist,
                     bool exportWithDrawings, Completion completion);
    void cancelCurrentExport();
    std::vector<ExportSegment> getSegmentsForExport(const CutsExportType& type) const;

  private:
    Result<ExportSnapshot> plan(const std::optional<CutsExportType>& type, ExportMode mode,
                                bool exportWithDrawings) const;
    ProductWords wordsFor(const ExportPlan& plan) const;
    ProductWords wordsForDrawings() const;
    ExportRun& makeRun(ProductWords words, Completion completion);
    void completeLater(Completion completion, std::optional<Error> error);

    ExportServices& services_;
    const std::string window_;
    int processedSegments_ = 0;  // of the last run
    std::unique_ptr<ExportRun> run_;
    Lifetime lifetime_;
};

}  // namespace tembrix
