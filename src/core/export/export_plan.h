#pragma once

#include <string>
#include <vector>

#include "ports/texts.h"

#include "core/export/cut_records.h"
#include "core/records/annotation_records.h"

namespace tembrix {

struct PlannedCut {
    ExportSegment segment;
    std::string clipName;  // the name of its file where each cut becomes one
};

// What an export cuts, in which order, and under which names.
struct ExportPlan {
    ExportMode mode = ExportMode::film;
    std::vector<PlannedCut> cuts;  // in the order of the product
    std::string productName;       // of the film or the archive
    bool skipsWholeVideo = true;   // leaves out cuts that are as long as the video
    bool withFreezeFrames = false;
};

// The plan of an export from the control window. `segments` come from getSegmentsForExport and are
// not empty; `library` holds the merged lists.
ExportPlan planExport(const CutsExportType& type, ExportMode mode, bool exportWithDrawings,
                      std::vector<ExportSegment> segments, const CollectionLists& library,
                      const Texts& texts);

}  // namespace tembrix
