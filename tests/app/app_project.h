#pragma once

#include <string>

#include "base/files.h"

#include "fakes/core_project.h"

namespace tembrix {

// A project with fakes for tests of real widgets. TEMBRIX_PICTURES=folder saves pictures of the
// windows, in the language of TEMBRIX_LANGUAGE.
struct AppProject : CoreProject {
    using CoreProject::CoreProject;

    ExportServices& exports = opened.exports;
};

}  // namespace tembrix
