#pragma once

#include <QRectF>
#include <optional>

#include "base/uuid.h"

#include "app/control/stamp_sprites.h"
#include "core/control/stamp_gestures.h"
#include "core/control/timeline_axis.h"
#include "core/control/timeline_editing_model.h"
#include "core/control/timeline_rows.h"

class QPainter;

namespace tembrix {

// The visible part of the axis: x on the axis is painted at x - scroll.
struct AxisView {
    TimelineAxis axis;
    double scroll = 0;
    double pixelRatio = 1;

    double left(double x) const { return x - scroll; }
};

// The painters of the control window. Each paints one kind of element into a rectangle, which is in
// the coordinates of the view: its left side is 0. They have no state.

// Vertical lines of the time grid.
class TimeGridPainter {
  public:
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view);
};

// The header above the rows: one tick and its time per grid step.
class TimestampsHeaderPainter {
  public:
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view);
};

// The background of a row, including the grid.
class RowGroundPainter {
  public:
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view, bool selected);
};

// The stamps of a row, with selection frames and the grips of the selected stamp.
class StampsPainter {
  public:
    struct Marks {
        std::optional<Uuid> selected;
        std::optional<Uuid> cursor;           // the stamp at the keyboard cursor
        std::optional<Uuid> pointed;          // the stamp that a click would take
        const StampResize* resize = nullptr;  // the stamp being resized, painted at its new size
        const StampMove* move = nullptr;      // the stamp being moved, which is not painted
    };
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view,
                      const TimelineRow& row, const Marks& marks, StampSprites& sprites);
    // Paints the stamp that is being moved to another row; `rect` is the area of its own row.
    static void paintMoving(QPainter& painter, const QRectF& rect, const AxisView& view,
                            const TimelineRow& row, const StampMove& move, bool selected,
                            StampSprites& sprites);
};

// The red line at the current time. `x` is on the axis.
class PlayheadPainter {
  public:
    static constexpr double width = 2;
    static QRectF strip(const QRectF& rect, const AxisView& view, double x);
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view, double x);
};

}  // namespace tembrix
