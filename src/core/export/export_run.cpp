#include "core/export/export_run.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "base/files.h"

#include "ports/media.h"
#include "ports/movie_renderer.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/export/archive.h"
#include "core/export/drawings_archive.h"
#include "core/export/export_errors.h"
#include "core/export/unsaved_products.h"
#include "core/playback/video_player_manager.h"

namespace tembrix {

namespace {

namespace fs = std::filesystem;

constexpr int canceledCode = 999;             // in any domain
constexpr double leastToEstimate = 2;         // seconds of rendering
constexpr float leastPartToEstimate = 0.01F;  // of the film

// Checks the source again before rendering.
Result<MediaInfo> examineSource(const fs::path& source, Media& media, const Texts& texts) {
    std::error_code ignored;
    if (!fs::exists(source, ignored))
        return plainError(texts.format("exportErrorSourceMissing", {pathText(source)}));
    return media.probe(source);
}

Result<std::vector<MovieJob>> compose(ExportSnapshot& snapshot, std::vector<double>& cutEnds,
                                      const ExportServices& services) {
    const auto info = examineSource(snapshot.source, services.media, services.texts);
    if (!info)
        return info.error();
    snapshot.info = *info;
    const ComposingTools tools{services.pictures, services.textMeasure, services.drawings,
                               services.texts, services.log};
    if (snapshot.plan.mode == ExportMode::playlist)
        return composeClips(snapshot, tools);
    auto film = composeFilm(snapshot, tools, &cutEnds);
    if (!film)
        return film.error();
    std::vector<MovieJob> jobs;
    jobs.push_back(std::move(*film));
    return jobs;
}

}  // namespace

struct ExportRun::Prepared {
    std::shared_ptr<RunFolder> folder;
    std::vector<MovieJob> jobs;
    std::vector<double> cutEnds;
};

ExportRun::ExportRun(ExportServices& services, ProductWords words, std::string window,
                     std::function<void(const ExportStatus&)> changed, Completion completion)
    : services_(services),
      words_(std::move(words)),
      window_(std::move(window)),
      source_(services.videoManager.currentVideoURL()),
      changed_(std::move(changed)),
      completion_(std::move(completion)),
      queue_(services.renderer, services.scheduler),
      work_(services.scheduler) {}

ExportRun::~ExportRun() {
    stop_.request_stop();
    leaveProduct();
    // The files may be large. The main thread does not wait until they are removed.
    if (folder_)
        work_.release(std::move(folder_));
}

void ExportRun::leaveProduct() {
    if (product_)
        services_.products.leaveWindow(*std::exchange(product_, std::nullopt));
}

void ExportRun::exportCuts(ExportSnapshot snapshot) {
    mode_ = snapshot.plan.mode;
    cuts_ = snapshot.plan.cuts.size();
    // The snapshot shares timelines with the main thread, so it must be released there.
    const auto shared = std::make_shared<ExportSnapshot>(std::move(snapshot));
    work_.run(
        Priority::userInitiated,
        [shared, services = services_]() -> Result<Prepared> {
            auto folder = RunFolder::make(services.directories.temporary);
            if (!folder)
                return folder.error();
            shared->folder = (*folder)->path();
            std::vector<double> cutEnds;
            auto jobs = compose(*shared, cutEnds, services);
            if (!jobs)
                return jobs.error();
            return Prepared{std::move(*folder), std::move(*jobs), std::move(cutEnds)};
        },
        [this, shared](Result<Prepared> prepared) {
            if (isCanceled())
                return end(std::nullopt);
            if (!prepared)
                return fail(prepared.error());
            render(std::move(*prepared));
        });
}

void ExportRun::render(Prepared prepared) {
    folder_ = std::move(prepared.folder);
    cutEnds_ = std::move(prepared.cutEnds);
    renderingSince_ = services_.scheduler.now();
    enter(ExportState::rendering);
    progressTimer_ = services_.scheduler.every(progressInterval, [this] {
        const auto progress = queue_.sessionProgress();
        if (mode_ == ExportMode::film && progress)
            advance(*progress);
        changed_(status());
    });
    queue_.start(
        std::move(prepared.jobs),
        [this] {
            if (mode_ == ExportMode::playlist)
                advance(static_cast<float>(queue_.ended()) / static_cast<float>(cuts_));
        },
        [this](const RenderQueue::Ending& ending) { rendered(ending); });
}

void ExportRun::rendered(const RenderQueue::Ending& ending) {
    progressTimer_.reset();
    if (mode_ == ExportMode::playlist)
        advance(1);
    if (isCanceled()) {
        if (mode_ == ExportMode::playlist)
            folder_->keep();  // so that finished clips are not lost
        return end(std::nullopt);
    }
    if (ending.lastError)
        return fail(*ending.lastError);
    if (ending.films.empty())
        return fail({"Export", -3, "No valid segments were exported"});
    if (mode_ == ExportMode::playlist)
        return pack(ending.films);
    advance(1);
    save(ending.films.front());
}

void ExportRun::pack(const std::vector<fs::path>& clips) {
    enter(ExportState::packing);
    work_.run(
        Priority::userInitiated,
        [clips, archive = folder_->path() / words_.defaultName, services = services_,
         stop = stop_.get_token()] {
            auto packed = packArchive(archive, clips, services.processes, services.texts, stop);
            std::error_code ignored;
            for (const auto& clip : clips)
                fs::remove(clip, ignored);
            return packed;
        },
        [this](const Result<fs::path>& archive) { packed(archive); });
}

void ExportRun::packed(const Result<fs::path>& archive) {
    if (isCanceled())
        return end(std::nullopt);
    if (!archive)
        return fail(archive.error());
    save(*archive);
}

void ExportRun::exportDrawings(std::vector<ExportDrawing> drawings,
                               std::optional<fs::path> drawingsFolder) {
    enter(ExportState::packing);
    struct Packed {
        std::shared_ptr<RunFolder> folder;
        fs::path archive;
    };
    work_.run(
        Priority::userInitiated,
        [drawings = std::move(drawings), drawingsFolder = std::move(drawingsFolder),
         name = words_.defaultName, services = services_,
         stop = stop_.get_token()]() -> Result<Packed> {
            auto folder = RunFolder::make(services.directories.temporary);
            if (!folder)
                return folder.error();
            const auto archive =
                packDrawings(drawings, drawingsFolder, (*folder)->path(), name, services, stop);
            if (!archive)
                return archive.error();
            return Packed{std::move(*folder), *archive};
        },
        [this](Result<Packed> result) {
            if (!result)
                return packed(result.error());
            folder_ = std::move(result->folder);
            packed(result->archive);
        });
}

void ExportRun::save(const fs::path& product) {
    enter(ExportState::saving);
    product_ = services_.products.add(
        {{std::move(folder_), product, source_},
         {words_.panelTitle, words_.defaultName, words_.extension, window_},
         words_.savingFailed,
         words_.saved},
        work_.guard([this](const Result<std::optional<fs::path>>& place) {
            product_.reset();
            end(place ? std::nullopt
                      : std::optional(plainError(words_.savingFailed + place.error().text)));
        }));
}

void ExportRun::advance(float progress) {
    if (progress <= progress_)
        return;
    progress_ = std::min(progress, 1.0F);
    const double now = services_.scheduler.now().secondsSince1970;
    const double past = now - renderingSince_.secondsSince1970;
    if (past >= leastToEstimate && progress_ >= leastPartToEstimate)
        expectedEnd_ = Date{now + past * (1 - progress_) / progress_};
    changed_(status());
}

void ExportRun::enter(ExportState state) {
    state_ = state;
    changed_(status());
}

int ExportRun::cutsDone() const {
    if (mode_ == ExportMode::playlist)
        return queue_.ended();
    const double filmTime = cutEnds_.empty() ? 0 : progress_ * cutEnds_.back();
    return static_cast<int>(std::count_if(cutEnds_.begin(), cutEnds_.end(), [&](double end) {
        return progress_ >= 1 || end <= filmTime;
    }));
}

ExportStatus ExportRun::status() const {
    ExportStatus status;
    status.state = state_;
    status.progress = progress_;
    status.cuts = static_cast<int>(mode_ == ExportMode::film ? cutEnds_.size() : cuts_);
    status.cutsDone = cutsDone();
    if (state_ == ExportState::rendering && expectedEnd_)
        status.secondsLeft = std::max(
            0.0, expectedEnd_->secondsSince1970 - services_.scheduler.now().secondsSince1970);
    return status;
}

void ExportRun::fail(const Error& error) {
    if (error.code == canceledCode)
        return end(std::nullopt);
    end(plainError(words_.makingFailed + describeMaking(error, services_.texts)));
}

// The completion may destroy this object, so this must be the last call of a step.
void ExportRun::end(std::optional<Error> error) {
    state_ = ExportState::idle;
    progressTimer_.reset();
    std::exchange(completion_, nullptr)(std::move(error));
}

void ExportRun::cancel() {
    stop_.request_stop();
    queue_.cancel();
    if (product_)
        services_.products.stopWriting(*product_);
    progressTimer_.reset();
}

}  // namespace tembrix
