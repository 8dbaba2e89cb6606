#pragma once

#include "base/log.h"

#include "ports/directories.h"
#include "ports/images.h"
#include "ports/media.h"
#include "ports/movie_renderer.h"
#include "ports/panels.h"
#include "ports/process_runner.h"
#include "ports/scheduler.h"
#include "ports/texts.h"

#include "core/export/export_drawings.h"

namespace tembrix {

class TagLibraryManager;
class TimelineDataManager;
class UnsavedProducts;
class VideoPlayerManager;

// The services that the exports of a project use. Background work uses a copy, because it may
// outlive the project for a short time. Then it must not use the player or the timelines; all other
// services live as long as the process.
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
    UnsavedProducts& products;
    ExportDrawings* drawings = nullptr;  // without it, exports show no drawings
};

}  // namespace tembrix
