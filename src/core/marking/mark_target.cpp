#include "core/marking/mark_target.h"

#include <algorithm>
#include <vector>

namespace tembrix {

MarkTarget markTarget(const TimelineDataManager& timeline, MarkupMode mode) {
    using Kind = MarkTarget::Kind;
    if (mode == MarkupMode::tagBased)
        return {Kind::lineOfTag, nullptr};
    const auto& selected = *timeline.selectedLineID;
    const TimelineLine* line = selected ? timeline.findLine(*selected) : nullptr;
    if (!line)
        return {};
    return {line->id == drawingsLineId() ? Kind::drawings : Kind::line, line};
}

std::optional<Uuid> neighborLine(const TimelineDataManager& timeline, int step) {
    std::vector<Uuid> ids;
    for (const auto& line : *timeline.lines)
        if (line->id != drawingsLineId())
            ids.push_back(line->id);
    const auto& selected = *timeline.selectedLineID;
    if (ids.empty() || (ids.size() == 1 && selected == ids.front()))
        return {};
    const auto at = selected ? std::find(ids.begin(), ids.end(), *selected) : ids.end();
    if (at == ids.end())
        return step > 0 ? ids.front() : ids.back();
    if (step > 0)
        return at + 1 == ids.end() ? ids.front() : *(at + 1);
    return at == ids.begin() ? ids.back() : *(at - 1);
}

}  // namespace tembrix
