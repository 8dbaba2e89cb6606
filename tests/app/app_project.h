#pragma once

#include <QLabel>
#include <string>

#include "base/files.h"

#include "app/services.h"
#include "fakes/core_project.h"

namespace tembrix {

// The core on fakes with the services that windows take, for tests of real widgets. A picture of a
// window can be asked for by TEMBRIX_PICTURES=folder, in the language of TEMBRIX_LANGUAGE.
struct AppProject : CoreProject {
    TimelineHistory& history = core.history;
    ExportServices& exports = core.exports;
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
