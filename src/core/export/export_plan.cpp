#include "core/export/export_plan.h"

#include <utility>
#include <variant>

#include "core/export/cut_planning.h"

namespace tembrix {

ExportPlan planExport(const CutsExportType& type, ExportMode mode, bool exportWithDrawings,
                      std::vector<ExportSegment> segments, const CollectionLists& library,
                      const Texts& texts) {
    ExportPlan plan;
    plan.mode = mode;
    plan.withFreezeFrames =
        exportWithDrawings || std::holds_alternative<cuts::DrawingsTimeline>(type);
    plan.productName = mode == ExportMode::film ? filmFileName(type, segments, texts)
                                                : std::string("export_playlist.zip");
    plan.cuts.reserve(segments.size());
    for (auto& segment : segments) {
        auto name = clipFileName(type, segment, plan.cuts.size() + 1, library, texts);
        plan.cuts.push_back({std::move(segment), std::move(name)});
    }
    return plan;
}

}  // namespace tembrix
