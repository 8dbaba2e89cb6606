#pragma once

#include <QLabel>
#include <string>

#include "base/files.h"

#include "app/services.h"
#include "core/export/export_helper.h"
#include "core/timeline/timeline_history.h"
#include "fakes/core_project.h"
#include "fakes/fake_images.h"
#include "fakes/fake_media.h"
#include "fakes/fake_movie_renderer.h"
#include "fakes/fake_process_runner.h"

namespace tembrix {

// The core on fakes with the services that windows take, for tests of real widgets. A picture of a
// window can be asked for by TEMBRIX_PICTURES=folder, in the language of TEMBRIX_LANGUAGE.
struct AppProject : CoreProject {
    FakeImageCodec images;
    FakeMedia media;
    FakeMovieRenderer renderer{scheduler};
    FakePictureRenderer pictures;
    FakeTextMeasure measure;
    FakeProcessRunner processes;
    TimelineHistory history{timeline};
    ExportServices exports{
        player, timeline,  tagLibrary,           media, renderer, pictures, measure, processes,
        panels, scheduler, folder.directories(), texts, log,      nullptr};
    AppServices services{
        scheduler,  events,
        texts,      locale,
        panels,     images,
        timeline,   history,
        tagLibrary, markupModes,
        player,     hotkeys,
        focus,      collections,
        exports,    [](QWidget* parent) -> QWidget* { return new QLabel(parent); }};
};

}  // namespace tembrix
