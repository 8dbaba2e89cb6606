#include "core/export/export_helper.h"

#include <utility>
#include <variant>

#include "core/collections/tag_library_manager.h"
#include "core/export/cut_planning.h"
#include "core/export/export_errors.h"
#include "core/playback/video_player_manager.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

ExportHelper::ExportHelper(ExportServices& services, std::string window)
    : services_(services), window_(std::move(window)) {}

ExportHelper::~ExportHelper() {
    if (run_)
        run_->leaveProduct();
    cancelCurrentExport();
}

std::vector<ExportSegment> ExportHelper::getSegmentsForExport(const CutsExportType& type) const {
    const auto& timeline = services_.timelineData;
    return tembrix::getSegmentsForExport(
        type,
        {timeline.lines.get(), timeline.selectedLineID.get(), services_.tagLibrary.merged.get(),
         services_.videoManager.videoDuration()},
        services_.log);
}

void ExportHelper::startExport(const std::optional<CutsExportType>& type, bool asPlaylist,
                               bool exportWithDrawings, Completion completion) {
    if (run_)
        return completeLater(std::move(completion), std::nullopt);
    processedSegments_ = 0;
    progress.set(0);
    status.setIfChanged({ExportState::preparing, 0, 0, 0, {}});
    if (type && std::holds_alternative<cuts::Screenshots>(*type)) {
        auto& run = makeRun(wordsForDrawings(), std::move(completion));
        if (services_.drawings)
            run.exportDrawings(services_.drawings->screenshots(), services_.drawings->folder());
        else
            run.exportDrawings({}, {});
        return;
    }
    auto snapshot =
        plan(type, asPlaylist ? ExportMode::playlist : ExportMode::film, exportWithDrawings);
    if (!snapshot)
        return completeLater(std::move(completion), snapshot.error());
    makeRun(wordsFor(snapshot->plan), std::move(completion)).exportCuts(std::move(*snapshot));
}

Result<ExportSnapshot> ExportHelper::plan(const std::optional<CutsExportType>& type,
                                          ExportMode mode, bool exportWithDrawings) const {
    const auto source = services_.videoManager.currentVideoURL();
    if (!source)
        return plainError("Asset not found");
    if (!type)
        return plainError("No export type selected");
    auto segments = getSegmentsForExport(*type);
    if (segments.empty())
        return plainError(services_.texts.text("fullControlExportNoSegments"));
    ExportSnapshot snapshot;
    snapshot.lines = services_.timelineData.lines.get();
    snapshot.library = services_.tagLibrary.merged.get();
    snapshot.timeEvents = services_.tagLibrary.active->timeEvents;
    snapshot.plan = planExport(*type, mode, exportWithDrawings, std::move(segments),
                               snapshot.library, services_.texts);
    snapshot.source = *source;
    if (snapshot.plan.withFreezeFrames && services_.drawings) {
        snapshot.drawings = services_.drawings->screenshots();
        snapshot.drawingsFolder = services_.drawings->folder();
    }
    return snapshot;
}

ProductWords ExportHelper::wordsFor(const ExportPlan& plan) const {
    const auto& texts = services_.texts;
    ProductWords words;
    words.defaultName = plan.productName;
    words.saved = texts.text("fullControlExportFilmSuccess") + " ";
    if (plan.mode == ExportMode::film) {
        words.panelTitle = texts.text("exportSaveFilmTitle");
        words.extension = "mp4";
        words.makingFailed = texts.text("fullControlExportFilmError") + ": ";
    } else {
        words.panelTitle = texts.text("exportSaveArchiveTitle");
        words.extension = "zip";
        words.makingFailed = "Ошибка сохранения плейлиста: ";
    }
    words.savingFailed = words.makingFailed;
    return words;
}

ProductWords ExportHelper::wordsForDrawings() const {
    ProductWords words;
    words.panelTitle = services_.texts.text("exportSaveArchiveTitle");
    words.defaultName = "screenshots.zip";
    words.extension = "zip";
    words.savingFailed = "Ошибка сохранения скриншотов: ";
    words.saved = "Скриншоты успешно экспортированы: ";
    return words;
}

ExportRun& ExportHelper::makeRun(ProductWords words, Completion completion) {
    run_ = std::make_unique<ExportRun>(
        services_, std::move(words), window_,
        [this](const ExportStatus& now) {
            progress.setIfChanged(now.progress);
            status.setIfChanged(now);
        },
        [this, completion = std::move(completion)](std::optional<Error> error) {
            processedSegments_ = run_->processedSegments();
            run_.reset();
            status.setIfChanged({});
            completion(std::move(error));
        });
    return *run_;
}

void ExportHelper::completeLater(Completion completion, std::optional<Error> error) {
    services_.scheduler.onMain(lifetime_.guard(
        [completion = std::move(completion), error = std::move(error)] { completion(error); }));
}

void ExportHelper::cancelCurrentExport() {
    if (run_)
        run_->cancel();
}

}  // namespace tembrix
