#include "core/export/export_helper.h"

#include <algorithm>
#include <cerrno>
#include <stop_token>
#include <utility>

#include "base/files.h"

#include "core/export/archive.h"
#include "core/export/cut_composition.h"

namespace tembrix {

namespace {

namespace fs = std::filesystem;

constexpr int canceledCode = 999;

Error plainError(std::string text) {
    return {"NSError", -1, std::move(text)};
}

Error canceledError() {
    return {"Export", canceledCode, "Canceled"};
}

// What the user reads about a failure. What the user can mend is told in the program's language;
// the rest in the words of whoever failed.
std::string describe(const Error& error, const Texts& texts) {
    if (error.domain == "file") {
        switch (error.code) {
            case ENOSPC:
            case EDQUOT:
                return texts.text("exportErrorDiskFull");
            case EACCES:
            case EPERM:
            case EROFS:
                return texts.text("exportErrorNotWritable");
            default:
                break;
        }
    }
    return error.text.empty() ? "Unknown export error" : error.text;
}

void removeQuietly(const fs::path& file) {
    std::error_code ignored;
    fs::remove(file, ignored);
}

// The last look before rendering: the folder for the product, and the source as it is now.
Result<MediaInfo> examineSource(const ExportSnapshot& snapshot, Media& media, const Texts& texts) {
    if (const auto folder = makeFolder(snapshot.temporary); !folder)
        return folder.error();
    std::error_code ignored;
    if (!fs::exists(snapshot.source, ignored))
        return plainError(texts.format("exportErrorSourceMissing", {pathText(snapshot.source)}));
    return media.probe(snapshot.source);
}

}  // namespace

struct ExportHelper::Run {
    ExportSnapshot snapshot;
    Completion completion;
    std::stop_source stop;  // asked by background work too
    bool canceled() const { return stop.stop_requested(); }

    // What the saving step says and asks.
    std::string extension;
    std::string defaultName;
    std::string failurePrefix;
    std::string successText;

    // Of a clip run.
    std::vector<MovieJob> jobs;
    std::size_t nextJob = 0;
    int running = 0;
    std::vector<std::optional<fs::path>> clips;  // by place in `jobs`
    std::optional<Error> lastError;
};

ExportHelper::ExportHelper(ExportServices& services) : services_(services) {}

ExportHelper::~ExportHelper() {
    cancelCurrentExport();
}

template <class Work, class Next>
void ExportHelper::inBackground(Work work, Next next) {
    services_.scheduler.background(Priority::userInitiated,
                                   [&scheduler = services_.scheduler, alive = std::weak_ptr(alive_),
                                    work = std::move(work), next = std::move(next)] {
                                       auto result = std::make_shared<decltype(work())>(work());
                                       scheduler.onMain([alive, next, result] {
                                           if (!alive.expired())
                                               next(*result);
                                       });
                                   });
}

std::vector<ExportSegment> ExportHelper::getSegmentsForExport(const CutsExportType& type) const {
    const auto& timeline = services_.timelineData;
    return tembrix::getSegmentsForExport(
        type,
        {timeline.lines.get(), timeline.selectedLineID.get(), services_.tagLibrary.merged.get(),
         services_.videoManager.videoDuration()},
        services_.log);
}

std::optional<Error> ExportHelper::check(const std::optional<CutsExportType>& type,
                                         Run& run) const {
    const auto source = services_.videoManager.currentVideoURL();
    if (!source)
        return plainError("Asset not found");
    if (!type)
        return plainError("No export type selected");
    auto& snapshot = run.snapshot;
    snapshot.type = *type;
    snapshot.segments = getSegmentsForExport(*type);
    if (snapshot.segments.empty())
        return plainError(services_.texts.text("fullControlExportNoSegments"));
    snapshot.source = *source;
    snapshot.temporary = services_.directories.temporary;
    snapshot.lines = services_.timelineData.lines.get();
    snapshot.library = services_.tagLibrary.merged.get();
    snapshot.timeEvents = services_.tagLibrary.active->timeEvents;
    return std::nullopt;
}

void ExportHelper::startExport(const std::optional<CutsExportType>& type, bool asPlaylist,
                               bool exportWithDrawings, Completion completion) {
    const auto onMain = [this](std::function<void()> step) {
        services_.scheduler.onMain([alive = std::weak_ptr(alive_), step = std::move(step)] {
            if (!alive.expired())
                step();
        });
    };
    if (run_) {
        onMain([completion = std::move(completion)] { completion(std::nullopt); });
        return;
    }
    const auto run = std::make_shared<Run>();
    run->completion = std::move(completion);
    run_ = run;
    processedSegments_ = 0;
    progress.set(0);

    if (type && std::holds_alternative<cuts::Screenshots>(*type)) {
        beginScreenshots(run);
        return;
    }
    if (auto error = check(type, *run)) {
        onMain([this, run, error = std::move(error)] { finish(run, error); });
        return;
    }
    auto& snapshot = run->snapshot;
    snapshot.withFreezeFrames =
        exportWithDrawings || std::holds_alternative<cuts::DrawingsTimeline>(*type);
    if (snapshot.withFreezeFrames && services_.drawings) {
        snapshot.drawings = services_.drawings->screenshots();
        snapshot.drawingsFolder = services_.drawings->folder();
    }
    run->successText = services_.texts.text("fullControlExportFilmSuccess") + " ";
    if (asPlaylist)
        beginClips(run);
    else
        beginFilm(run);
}

// The film.

void ExportHelper::beginFilm(const RunPointer& run) {
    run->extension = "mp4";
    run->failurePrefix = services_.texts.text("fullControlExportFilmError") + ": ";
    inBackground(
        [run, &services = services_]() -> Result<MovieJob> {
            auto info = examineSource(run->snapshot, services.media, services.texts);
            if (!info)
                return info.error();
            run->snapshot.info = *info;
            auto job =
                composeFilm(run->snapshot, {services.pictures, services.textMeasure,
                                            services.drawings, services.texts, services.log});
            if (!job)
                return job;
            std::error_code leftover;
            fs::remove(job->target, leftover);
            if (leftover)
                return Error{"file", leftover.value(),
                             pathText(job->target) + ": " + leftover.message()};
            return job;
        },
        [this, run](Result<MovieJob>& job) {
            if (run->canceled())
                return fail(run, canceledError());
            if (!job)
                return fail(run, job.error());
            run->defaultName = pathText(job->target.filename());
            auto session = startSession(
                std::move(*job),
                [this, run](const Result<fs::path>& result) { filmEnded(run, result); });
            if (!session)
                return fail(run, session.error());
            exportProgressTimer_ =
                services_.scheduler.every(progressInterval, [this, weak = std::weak_ptr(*session)] {
                    if (const auto film = weak.lock())
                        progress.set(film->progress());
                });
        });
}

void ExportHelper::filmEnded(const RunPointer& run, const Result<fs::path>& result) {
    stopProgressTimer();
    if (run->canceled()) {
        if (result)
            removeQuietly(*result);
        return fail(run, canceledError());
    }
    if (!result)
        return fail(run, result.error());
    progress.set(1);
    save(run, *result);
}

// The clips.

void ExportHelper::beginClips(const RunPointer& run) {
    run->extension = "zip";
    run->defaultName = "export_playlist.zip";
    run->failurePrefix = "Ошибка сохранения плейлиста: ";
    inBackground(
        [run, &services = services_]() -> Result<std::vector<MovieJob>> {
            auto info = examineSource(run->snapshot, services.media, services.texts);
            if (!info)
                return info.error();
            run->snapshot.info = *info;
            return composeClips(run->snapshot, {services.pictures, services.textMeasure,
                                                services.drawings, services.texts, services.log});
        },
        [this, run](Result<std::vector<MovieJob>>& jobs) {
            if (run->canceled())
                return fail(run, canceledError());
            if (!jobs)
                return fail(run, jobs.error());
            run->jobs = std::move(*jobs);
            run->clips.resize(run->jobs.size());
            startNextClips(run);
        });
}

void ExportHelper::startNextClips(const RunPointer& run) {
    while (run->running < sessionsAtOnce && run->nextJob < run->jobs.size() && !run->canceled()) {
        const std::size_t clip = run->nextJob++;
        removeQuietly(run->jobs[clip].target);
        const auto session = startSession(
            std::move(run->jobs[clip]),
            [this, run, clip](const Result<fs::path>& result) { clipEnded(run, clip, result); });
        if (session)
            ++run->running;
        else
            run->lastError = session.error();
    }
    if (run->running == 0)
        clipsEnded(run);
}

void ExportHelper::clipEnded(const RunPointer& run, std::size_t clip,
                             const Result<fs::path>& result) {
    if (result)
        run->clips[clip] = *result;
    else if (!run->canceled())
        run->lastError = result.error();
    ++processedSegments_;
    --run->running;
    progress.set(static_cast<float>(processedSegments_) /
                 static_cast<float>(run->snapshot.segments.size()));
    startNextClips(run);
}

void ExportHelper::clipsEnded(const RunPointer& run) {
    progress.set(1);
    std::vector<fs::path> clips;
    for (const auto& clip : run->clips)
        if (clip)
            clips.push_back(*clip);
    if (run->canceled())
        return fail(run, canceledError());
    if (run->lastError) {
        std::for_each(clips.begin(), clips.end(), removeQuietly);
        return fail(run, *run->lastError);
    }
    if (clips.empty())
        return fail(run, {"Export", -3, "No valid segments were exported"});
    inBackground(
        [run, clips, &services = services_] {
            auto archive = packArchive(run->snapshot.temporary / run->defaultName, clips,
                                       services.processes, services.texts, run->stop.get_token());
            std::for_each(clips.begin(), clips.end(), removeQuietly);
            return archive;
        },
        [this, run](const Result<fs::path>& archive) {
            if (run->canceled() && !archive)
                return fail(run, canceledError());
            if (!archive)
                return fail(run, archive.error());
            save(run, *archive);
        });
}

// The drawings' pictures.

void ExportHelper::beginScreenshots(const RunPointer& run) {
    run->extension = "zip";
    run->defaultName = "screenshots.zip";
    run->successText = "Скриншоты успешно экспортированы: ";
    auto& snapshot = run->snapshot;
    if (services_.drawings) {
        snapshot.drawings = services_.drawings->screenshots();
        snapshot.drawingsFolder = services_.drawings->folder();
    }
    snapshot.temporary = services_.directories.temporary;
    inBackground(
        [run, &services = services_]() -> Result<fs::path> {
            const auto& drawings = run->snapshot;
            if (drawings.drawings.empty())
                return plainError("Нет скриншотов для экспорта");
            if (!drawings.drawingsFolder)
                return plainError("Не найдены файлы проекта");
            std::vector<fs::path> files;
            for (const auto& drawing : drawings.drawings) {
                auto file = *drawings.drawingsFolder / pathFromText(drawing.fileName());
                std::error_code ignored;
                if (fs::exists(file, ignored))
                    files.push_back(std::move(file));
                else
                    services.log.line("Screenshot not found: " + drawing.screenshotName);
            }
            if (files.empty())
                return plainError("Не найдены файлы скриншотов");
            if (const auto folder = makeFolder(drawings.temporary); !folder)
                return folder.error();
            return packArchive(drawings.temporary / run->defaultName, files, services.processes,
                               services.texts, run->stop.get_token());
        },
        [this, run](const Result<fs::path>& archive) {
            if (run->canceled() && !archive)
                return fail(run, canceledError());
            if (!archive)
                return fail(run, archive.error());
            run->failurePrefix = "Ошибка сохранения скриншотов: ";
            save(run, *archive);
        });
}

Result<std::shared_ptr<MovieSession>> ExportHelper::startSession(
    MovieJob job, std::function<void(Result<fs::path>)> ended) {
    // The renderer calls back on a thread of its own, perhaps before start has returned. The place
    // of the session is known on the main thread by the time that the hop arrives there.
    const auto place = std::make_shared<std::weak_ptr<MovieSession>>();
    auto session = services_.renderer.start(
        std::move(job), [this, &scheduler = services_.scheduler, alive = std::weak_ptr(alive_),
                         place, ended = std::move(ended)](Result<fs::path> result) {
            scheduler.onMain([this, alive, place, ended, result = std::move(result)] {
                if (alive.expired())
                    return;
                std::erase(activeExportSessions_, place->lock());
                ended(result);
            });
        });
    if (session) {
        *place = *session;
        activeExportSessions_.push_back(*session);
    }
    return session;
}

// The ends of all runs.

void ExportHelper::save(const RunPointer& run, const fs::path& product) {
    if (run->canceled()) {
        removeQuietly(product);
        return fail(run, canceledError());
    }
    const auto& texts = services_.texts;
    const auto title =
        texts.text(run->extension == "zip" ? "exportSaveArchiveTitle" : "exportSaveFilmTitle");
    services_.panels.save(
        {title, run->defaultName, run->extension},
        [this, alive = std::weak_ptr(alive_), run, product](std::optional<fs::path> target) {
            if (alive.expired())
                return;
            if (!target || run->canceled())
                return finish(run, std::nullopt);  // the product stays where it is
            inBackground(
                [run, product, target = *target] {
                    std::error_code ignored;
                    const bool inPlace = fs::equivalent(target, product, ignored);
                    const auto copied =
                        replaceFileByCopy(target, product, [&] { return !run->canceled(); });
                    if (!inPlace)
                        removeQuietly(product);
                    return copied;
                },
                [this, run, target = *target](const Result<void>& copied) {
                    if (run->canceled() && !copied)
                        return fail(run, canceledError());
                    if (!copied)
                        return fail(run, copied.error());
                    services_.log.line(run->successText + pathText(target));
                    finish(run, std::nullopt);
                });
        });
}

void ExportHelper::fail(const RunPointer& run, const Error& error) {
    if (error.code == canceledCode)
        return finish(run, std::nullopt);
    finish(run, plainError(run->failurePrefix + describe(error, services_.texts)));
}

void ExportHelper::finish(const RunPointer& run, std::optional<Error> error) {
    stopProgressTimer();
    run_.reset();
    run->completion(std::move(error));
}

void ExportHelper::cancelCurrentExport() {
    if (run_)
        run_->stop.request_stop();
    // A session may end, and so change the list, while it is being canceled.
    for (const auto& session : std::exchange(activeExportSessions_, {}))
        session->cancel();
    stopProgressTimer();
}

}  // namespace tembrix
