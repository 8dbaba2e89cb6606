#pragma once

#include <string>
#include <vector>

#include "ports/texts.h"

#include "core/export/cut_records.h"
#include "core/records/annotation_records.h"

namespace tembrix {

struct PlannedCut {
    ExportSegment segment;
    std::string clipName;  // file name if each cut is a file of its own
};

// The cuts of an export, their order and their names.
struct ExportPlan {
    ExportMode mode = ExportMode::film;
    std::vector<PlannedCut> cuts;  // in the order of the product
    std::string productName;       // file name of the film or the archive
    bool skipsWholeVideo = true;   // leaves out cuts as long as the video
    bool withFreezeFrames = false;
};

// The plan of an export from the control window. `segments` comes from getSegmentsForExport and
// must not be empty; `library` is the merged lists.
ExportPlan planExport(const CutsExportType& type, ExportMode mode, bool exportWithDrawings,
                      std::vector<ExportSegment> segments, const CollectionLists& library,
                      const Texts& texts);

}  // namespace tembrix
