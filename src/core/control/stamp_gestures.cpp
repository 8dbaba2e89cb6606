#include "core/control/stamp_gestures.h"

#include <algorithm>

#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

StampResize::StampResize(const Uuid& line, const TimelineStamp& stamp, ResizeEdge edge,
                         const TimelineAxis& axis)
    : line_(line),
      stamp_(stamp.id),
      edge_(edge),
      axis_(axis),
      originalStartTime_(stamp.timeStartSeconds),
      visualWidth_(std::max(axis.x(stamp.length()), TimelineMetrics::smallestResizingWidth)),
      visualOffsetX_(axis.x(stamp.timeStartSeconds)),
      maxVisualOffsetX_(visualOffsetX_ + visualWidth_ - TimelineMetrics::smallestResizingWidth) {}

bool StampResize::change(double dx) {
    constexpr double smallest = TimelineMetrics::smallestResizingWidth;
    if (edge_ == ResizeEdge::left) {
        const double offset = visualOffsetX_ + dx;
        if (offset < 0 || offset > maxVisualOffsetX_)
            return false;
        visualWidth_ = std::max(visualWidth_ - dx, smallest);
        visualOffsetX_ = offset;
        return true;
    }
    const double width = std::max(visualWidth_ + dx, smallest);
    if (width + visualOffsetX_ > axis_.width)
        return false;
    visualWidth_ = width;
    return true;
}

double StampResize::edgeTime() const {
    return edge_ == ResizeEdge::left ? axis_.time(visualOffsetX_)
                                     : originalStartTime_ + visualSeconds();
}

double StampResize::edgeX() const {
    return axis_.x(edgeTime());
}

double StampResize::finalTime() const {
    if (edge_ == ResizeEdge::right)
        return std::min(edgeTime(), axis_.duration);
    const double start = std::max(edgeTime(), 0.0);
    const double finish = std::min(start + visualSeconds(), axis_.duration);
    return std::min(start, finish - TimelineDataManager::minStampLength);
}

void StampMove::change(double dy) {
    const double above = static_cast<double>(row_) * TimelineMetrics::rowHeight;
    const double below = static_cast<double>(rowCount_ - 1 - row_) * TimelineMetrics::rowHeight;
    dragOffsetY_ = std::clamp(dy, -above, below);
}

std::size_t StampMove::targetRow(double y) const {
    const double fromTop = y + TimelineMetrics::rowHeight * static_cast<double>(row_);
    if (fromTop < 0)
        return 0;
    return std::min(static_cast<std::size_t>(fromTop / TimelineMetrics::rowHeight), rowCount_ - 1);
}

}  // namespace tembrix
