#include "core/export/cut_composition.h"

#include <algorithm>
#include <cmath>

#include "base/files.h"
#include "base/image.h"

#include "core/export/cut_planning.h"

namespace tembrix {

namespace {

constexpr int framesPerSecond = 30;
constexpr double nearStart = 0.1;         // seconds
constexpr double wholeVideoShare = 0.99;  // a cut that ends later counts as the whole video

// Joins cuts into one film. Durations are added in ticks, so that rounding errors do not add up.
class Composer {
  public:
    Composer(const ExportSnapshot& snapshot, const ComposingTools& tools)
        : snapshot_(snapshot), tools_(tools) {}

    void insert(const ExportSegment& segment) {
        const auto drawings = snapshot_.plan.withFreezeFrames
                                  ? screenshotsForSegment(segment, snapshot_.drawings)
                                  : std::vector<ExportDrawing>();
        if (drawings.empty())
            insertSource(segment.timeRange.start, segment.timeRange.end());
        else
            insertWithFreezeFrames(segment, drawings);
    }

    MediaTime insertionTime() const { return insertionTime_; }
    std::vector<std::variant<SourcePiece, StillPiece>> takePieces() { return std::move(pieces_); }

  private:
    void insertSource(MediaTime from, MediaTime to) {
        if (from >= to)
            return;
        pieces_.emplace_back(SourcePiece{from.seconds(), (to - from).seconds()});
        insertionTime_ = insertionTime_ + (to - from);
    }

    void insertWithFreezeFrames(const ExportSegment& segment,
                                const std::vector<ExportDrawing>& drawings) {
        if (!snapshot_.drawingsFolder)
            return;
        auto position = segment.timeRange.start;
        for (const auto& drawing : drawings) {
            const auto time = MediaTime::fromSeconds(drawing.videoTime);
            insertSource(position, time);
            position = std::max(position, time);
            const auto file = *snapshot_.drawingsFolder / pathFromText(drawing.fileName());
            if (!tools_.drawings->picture(file))
                continue;
            tools_.log.line("📸 Экспорт скриншота '" + drawing.screenshotName +
                            "' с длительностью " + logNumber(drawing.displayDuration) + " секунд");
            const auto frames =
                static_cast<long long>(std::ceil(drawing.displayDuration * framesPerSecond));
            if (frames <= 0)
                continue;
            StillPiece still;
            still.duration = static_cast<double>(frames) / framesPerSecond;
            still.load = [&drawings = *tools_.drawings, file] {
                return drawings.picture(file).optional().value_or(ImageBuffer());
            };
            pieces_.emplace_back(std::move(still));
            insertionTime_ = insertionTime_ + MediaTime{frames * 600 / framesPerSecond};
        }
        insertSource(position, segment.timeRange.end());
    }

    const ExportSnapshot& snapshot_;
    const ComposingTools& tools_;
    std::vector<std::variant<SourcePiece, StillPiece>> pieces_;
    MediaTime insertionTime_;
};

// The overlay of a cut in the film. Absent without a tag.
std::optional<OverlayItem> overlayItem(const ExportSegment& segment, MediaTime start,
                                       MediaTime duration, const ExportSnapshot& snapshot) {
    auto tag = overlayTag(segment.stamp, snapshot.library);
    if (!tag)
        return std::nullopt;
    return OverlayItem{
        std::move(*tag), segment.stamp, labelGroupsForStamp(segment.stamp, snapshot.library),
        start,           duration,      renderSizeOf(snapshot.info)};
}

MovieOverlay movieOverlay(const RichText& text, MediaTime start, MediaTime duration, Size size,
                          const ComposingTools& tools) {
    auto bar = overlayBar(text, size, tools.textMeasure);
    MovieOverlay overlay;
    overlay.y = bar.top;
    overlay.start = start.seconds();
    overlay.duration = duration.seconds();
    overlay.paint = [&pictures = tools.pictures, picture = std::move(bar.picture)] {
        return pictures.render(picture);
    };
    return overlay;
}

bool coversVideo(const MediaTimeRange& range, double videoDuration) {
    return range.start.seconds() < nearStart &&
           range.end().seconds() > videoDuration * wholeVideoShare;
}

void logSkipped(std::string_view where, const MediaTimeRange& range, double videoDuration,
                Log& log) {
    log.line("Пропущен сегмент" + std::string(where) +
             ", который равен всему видео: start=" + logNumber(range.start.seconds()) +
             ", duration=" + logNumber(range.duration.seconds()) +
             ", videoDuration=" + logNumber(videoDuration));
}

// Whether a film of this length has at least one frame.
bool hasFrames(MediaTime duration) {
    return std::lround(duration.seconds() * framesPerSecond) > 0;
}

std::optional<Error> checkSource(const ExportSnapshot& snapshot) {
    if (snapshot.plan.cuts.empty())
        return Error{"Export", -1, "No segments to export"};
    if (!snapshot.info.hasVideo)
        return Error{"Export", 0, "Video track not found"};
    return std::nullopt;
}

MovieJob jobFor(const ExportSnapshot& snapshot, const std::string& name) {
    MovieJob job;
    job.source = snapshot.source;
    job.renderSize = renderSizeOf(snapshot.info);
    job.framesPerSecond = framesPerSecond;
    job.target = snapshot.folder / pathFromText(name);
    return job;
}

}  // namespace

std::vector<ExportDrawing> screenshotsForSegment(const ExportSegment& segment,
                                                 const std::vector<ExportDrawing>& drawings) {
    const double start = segment.timeRange.start.seconds();
    const double end = segment.timeRange.end().seconds();
    std::vector<ExportDrawing> result;
    for (const auto& drawing : drawings) {
        const auto& stamps = drawing.relatedStampIds;
        const bool related = !segment.stampId || std::find(stamps.begin(), stamps.end(),
                                                           *segment.stampId) != stamps.end();
        if (related && start <= drawing.videoTime && drawing.videoTime <= end)
            result.push_back(drawing);
    }
    std::stable_sort(
        result.begin(), result.end(),
        [](const ExportDrawing& a, const ExportDrawing& b) { return a.videoTime < b.videoTime; });
    return result;
}

Size renderSizeOf(const MediaInfo& info) {
    const auto even = [](double side) {
        return std::max(2.0, 2.0 * std::floor(std::round(std::abs(side)) / 2.0));
    };
    return {even(info.size.width), even(info.size.height)};
}

Result<MovieJob> composeFilm(const ExportSnapshot& snapshot, const ComposingTools& tools,
                             std::vector<double>* cutEnds) {
    if (const auto error = checkSource(snapshot))
        return *error;
    const double videoDuration = snapshot.info.duration;
    const StampNumbers numbers(snapshot.lines);
    auto job = jobFor(snapshot, snapshot.plan.productName);
    Composer composer(snapshot, tools);
    for (const auto& [segment, clipName] : snapshot.plan.cuts) {
        if (snapshot.plan.skipsWholeVideo && coversVideo(segment.timeRange, videoDuration)) {
            logSkipped("", segment.timeRange, videoDuration, tools.log);
            continue;
        }
        const auto start = composer.insertionTime();
        composer.insert(segment);
        if (cutEnds)
            cutEnds->push_back(composer.insertionTime().seconds());
        const auto duration = composer.insertionTime() - start;
        const auto item = overlayItem(segment, start, duration, snapshot);
        const auto text = item && duration > MediaTime{}
                              ? overlayText(*item, numbers, snapshot.library, snapshot.timeEvents)
                              : std::nullopt;
        if (text)
            job.overlays.push_back(movieOverlay(*text, start, duration, job.renderSize, tools));
    }
    if (!hasFrames(composer.insertionTime()))
        return Error{"Export", -2, "No valid segments to export"};
    job.pieces = composer.takePieces();
    return job;
}

Result<std::vector<MovieJob>> composeClips(const ExportSnapshot& snapshot,
                                           const ComposingTools& tools) {
    if (const auto error = checkSource(snapshot))
        return *error;
    const double videoDuration = snapshot.info.duration;
    const StampNumbers numbers(snapshot.lines);
    std::vector<MovieJob> jobs;
    for (const auto& [segment, clipName] : snapshot.plan.cuts) {
        if (snapshot.plan.skipsWholeVideo && coversVideo(segment.timeRange, videoDuration)) {
            logSkipped(" в плейлисте", segment.timeRange, videoDuration, tools.log);
            continue;
        }
        Composer composer(snapshot, tools);
        composer.insert(segment);
        const auto duration = composer.insertionTime();
        if (!hasFrames(duration)) {
            tools.log.line("Пропущен сегмент в плейлисте короче кадра: duration=" +
                           logNumber(duration.seconds()));
            continue;
        }
        auto job = jobFor(snapshot, clipName);
        // A clip without a text has a bar of minimum height.
        if (const auto item = overlayItem(segment, {}, duration, snapshot))
            job.overlays.push_back(
                movieOverlay(overlayText(*item, numbers, snapshot.library, snapshot.timeEvents)
                                 .value_or(RichText{}),
                             {}, duration, job.renderSize, tools));
        job.pieces = composer.takePieces();
        jobs.push_back(std::move(job));
    }
    return jobs;
}

}  // namespace tembrix
