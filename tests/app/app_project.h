#pragma once

#include <string>

#include "base/files.h"

#include "fakes/core_project.h"

namespace tembrix {

// A project on fakes for tests of real widgets. A picture of a window can be asked for by
// TEMBRIX_PICTURES=folder, in the language of TEMBRIX_LANGUAGE.
struct AppProject : CoreProject {
    using CoreProject::CoreProject;

    ExportServices& exports = opened.exports;
};

}  // namespace tembrix
