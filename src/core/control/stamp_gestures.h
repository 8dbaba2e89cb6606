#pragma once

#include <cstddef>

#include "base/uuid.h"

#include "core/control/timeline_axis.h"
#include "core/control/timeline_rows.h"
#include "core/records/timeline_records.h"

namespace tembrix {

// The drag of one edge of a stamp, from the first movement to the release. Only the painted stamp
// changes; the new times are computed at the end.
class StampResize {
  public:
    StampResize(const Uuid& line, const TimelineStamp& stamp, ResizeEdge edge,
                const TimelineAxis& axis);

    // Moves the edge by `dx` points from its current position. Returns false and changes nothing if
    // the edge would leave the axis or the stamp would become too short.
    bool change(double dx);

    const Uuid& line() const { return line_; }
    const Uuid& stamp() const { return stamp_; }
    ResizeEdge edge() const { return edge_; }
    double x() const { return visualOffsetX_; }    // left side of the painted stamp in points
    double width() const { return visualWidth_; }  // width of the painted stamp in points
    double edgeTime() const;                       // seconds
    double edgeX() const;                          // new position of the playhead in points

    // The new time of the dragged edge in seconds.
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

// The drag of a stamp to another line.
class StampMove {
  public:
    StampMove(const StampDragInfo& info, std::size_t row, std::size_t rowCount)
        : info_(info), row_(row), rowCount_(rowCount) {}

    // `dy` is the distance in points since the press. The stamp stays within the rows.
    void change(double dy);

    const StampDragInfo& info() const { return info_; }
    std::size_t row() const { return row_; }
    double offsetY() const { return dragOffsetY_; }  // points

    // The row on which the stamp is dropped. `y` is the position of the pointer in points below the
    // top of the stamp's own row.
    std::size_t targetRow(double y) const;

  private:
    StampDragInfo info_;
    std::size_t row_;
    std::size_t rowCount_;
    double dragOffsetY_ = 0;
};

}  // namespace tembrix
