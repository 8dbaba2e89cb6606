#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "base/geometry.h"
#include "base/log.h"
#include "base/result.h"

#include "ports/images.h"
#include "ports/media.h"
#include "ports/movie_renderer.h"
#include "ports/texts.h"

#include "core/export/cut_records.h"
#include "core/export/export_drawings.h"
#include "core/export/export_plan.h"
#include "core/export/overlay_bar.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// A copy of all data that composing reads, made at the start of a run, so that later changes by the
// user have no effect on it.
struct ExportSnapshot {
    ExportPlan plan;
    TimelineLines lines;
    CollectionLists library;            // merged
    std::vector<TimeEvent> timeEvents;  // of the active collection
    std::vector<ExportDrawing> drawings;
    std::optional<std::filesystem::path> drawingsFolder;
    std::filesystem::path source;
    std::filesystem::path folder;  // of the films
    MediaInfo info;                // of the source
};

// The services that composing uses. Thread-safe.
struct ComposingTools {
    const PictureRenderer& pictures;
    const TextMeasure& textMeasure;
    const ExportDrawings* drawings;
    const Texts& texts;
    Log& log;
};

// The drawings within a cut, including both ends, sorted by time.
std::vector<ExportDrawing> screenshotsForSegment(const ExportSegment& segment,
                                                 const std::vector<ExportDrawing>& drawings);

// The upright size of the source in even numbers, as the encoder requires them.
Size renderSizeOf(const MediaInfo& info);

// One job with all cuts in sequence. Cuts as long as the whole video are skipped with a log line if
// the plan requires it. `cutEnds` gets the end of each cut in seconds of the film.
Result<MovieJob> composeFilm(const ExportSnapshot& snapshot, const ComposingTools& tools,
                             std::vector<double>* cutEnds = nullptr);

// One job per cut, in order. Cuts as long as the video are skipped in the same way. A cut shorter
// than half a frame has no job.
Result<std::vector<MovieJob>> composeClips(const ExportSnapshot& snapshot,
                                           const ComposingTools& tools);

}  // namespace tembrix
