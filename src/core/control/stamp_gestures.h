#pragma once

#include <cstddef>

#include "base/uuid.h"

#include "core/control/timeline_axis.h"
#include "core/control/timeline_rows.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// An edge of a stamp under the pointer, from the first movement to the release. Only the stamp as
// drawn changes here; the times are worked out at the end.
class StampResize {
  public:
    StampResize(const Uuid& line, const TimelineStamp& stamp, ResizeEdge edge,
                const TimelineAxis& axis);

    // Moves the edge by `dx` points from where it stands. A change that would leave the axis, or
    // would make the stamp too short, is ignored as a whole: the answer is false.
    bool change(double dx);

    const Uuid& line() const { return line_; }
    const Uuid& stamp() const { return stamp_; }
    ResizeEdge edge() const { return edge_; }
    double x() const { return visualOffsetX_; }    // of the stamp as drawn, points
    double width() const { return visualWidth_; }  // of the stamp as drawn, points
    double edgeTime() const;                       // seconds
    double edgeX() const;                          // where the playhead goes, points

    // The new time of the dragged edge, seconds.
    double finalTime() const;

  private:
    double visualSeconds() const { return axis_.time(visualWidth_); }

    Uuid line_;
    Uuid stamp_;
    ResizeEdge edge_;
    TimelineAxis axis_;
    double originalStartTime_;
    double visualWidth_;
    double visualOffsetX_;
    double maxVisualOffsetX_;
};

// A stamp on its way to another line.
class StampMove {
  public:
    StampMove(const StampDragInfo& info, std::size_t row, std::size_t rowCount)
        : info_(info), row_(row), rowCount_(rowCount) {}

    // `dy` is the whole way since the press, points. The stamp stays within the rows.
    void change(double dy);

    const StampDragInfo& info() const { return info_; }
    std::size_t row() const { return row_; }
    double offsetY() const { return dragOffsetY_; }  // points

    // The row on which the stamp is dropped, the pointer being `y` points below the top of its own
    // row.
    std::size_t targetRow(double y) const;

  private:
    StampDragInfo info_;
    std::size_t row_;
    std::size_t rowCount_;
    double dragOffsetY_ = 0;
};

}  // namespace tembrix
