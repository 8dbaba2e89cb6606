#pragma once

#include <string>
#include <vector>

#include "base/log.h"
#include "base/uuid.h"

#include "ports/texts.h"

#include "core/export/cut_records.h"
#include "core/records/annotation_records.h"
#include "core/records/timeline_records.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// What planning reads. `videoDuration` is the open video's length in seconds, 0 without one.
struct CutPlanInput {
    const TimelineLines& lines;
    std::optional<Uuid> selectedLineID;
    const CollectionLists& library;  // the merged lists
    double videoDuration = 0;
};

// The cuts of an export, sorted by start; stable, never merged. Empty means that nothing matched.
std::vector<ExportSegment> getSegmentsForExport(const CutsExportType& type,
                                                const CutPlanInput& input, Log& log);

std::vector<OverlayLabelGroupItem> labelGroupsForStamp(const TimelineStamp& stamp,
                                                       const CollectionLists& library);

// A number as log lines write it: the shortest text that reads back, with ".0" on whole numbers.
std::string logNumber(double value);

// The stamp's tag, or a substitute for a drawing; absent means no overlay.
std::optional<Tag> overlayTag(const TimelineStamp& stamp, const CollectionLists& library);

// Choices that the selection sheets offer: what stamps of any timeline carry, by name.
std::vector<Tag> tagsOnTimelines(const TimelineLines& lines, const CollectionLists& library);
std::vector<Label> labelsOnTimelines(const TimelineLines& lines, const CollectionLists& library);
std::vector<Label> labelsOfTag(const TimelineLines& lines, const CollectionLists& library,
                               const Tag& tag);
std::vector<Tag> tagsOfLabel(const TimelineLines& lines, const CollectionLists& library,
                             const Label& label);
std::vector<TimeEvent> eventsOnTimelines(const TimelineLines& lines,
                                         const CollectionLists& library);

// Names of the products, each good for any file system: a slash or a control character becomes "-",
// and a name too long for a file system loses characters before its ending, never the ending
// itself, so that the names of one run stay apart. `segments` is not empty; a screenshots export
// has no such names. `position` is the 1-based place of the cut in the run.
std::string filmFileName(const CutsExportType& type, const std::vector<ExportSegment>& segments,
                         const Texts& texts);
std::string clipFileName(const CutsExportType& type, const ExportSegment& segment,
                         std::size_t position, const CollectionLists& library, const Texts& texts);

}  // namespace tembrix
