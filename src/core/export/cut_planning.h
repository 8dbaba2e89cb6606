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

// The input of planning. `videoDuration` is the length of the open video in seconds, 0 without one.
struct CutPlanInput {
    const TimelineLines& lines;
    std::optional<Uuid> selectedLineID;
    const CollectionLists& library;  // the merged lists
    double videoDuration = 0;
};

// The cuts of an export, sorted by start. The sort is stable and cuts are not merged. Empty if
// nothing matches.
std::vector<ExportSegment> getSegmentsForExport(const CutsExportType& type,
                                                const CutPlanInput& input, Log& log);

std::vector<OverlayLabelGroupItem> labelGroupsForStamp(const TimelineStamp& stamp,
                                                       const CollectionLists& library);

// A number for a log line: the shortest exact text, with ".0" after whole numbers.
std::string logNumber(double value);

// The stamp's tag, or a substitute for a drawing. Absent if the cut has no overlay.
std::optional<Tag> overlayTag(const TimelineStamp& stamp, const CollectionLists& library);

// The choices of the selection sheets: items used by the stamps of any timeline, sorted by name.
std::vector<Tag> tagsOnTimelines(const TimelineLines& lines, const CollectionLists& library);
std::vector<Label> labelsOnTimelines(const TimelineLines& lines, const CollectionLists& library);
std::vector<Label> labelsOfTag(const TimelineLines& lines, const CollectionLists& library,
                               const Tag& tag);
std::vector<Tag> tagsOfLabel(const TimelineLines& lines, const CollectionLists& library,
                             const Label& label);
std::vector<TimeEvent> eventsOnTimelines(const TimelineLines& lines,
                                         const CollectionLists& library);

// Names of the exported files, different within one run. `segments` must not be empty; exports of
// drawings as pictures do not use these names. `position` is the 1-based number of the cut.
std::string filmFileName(const CutsExportType& type, const std::vector<ExportSegment>& segments,
                         const Texts& texts);
std::string clipFileName(const CutsExportType& type, const ExportSegment& segment,
                         std::size_t position, const CollectionLists& library, const Texts& texts);

}  // namespace tembrix
