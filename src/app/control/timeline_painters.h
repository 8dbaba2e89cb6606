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

// The part of the axis in view: point `x` of the axis stands at x - scroll of the painter.
struct AxisView {
    TimelineAxis axis;
    double scroll = 0;
    double pixelRatio = 1;

    double left(double x) const { return x - scroll; }
};

// The painters of the control window. Each paints one kind of thing into a rectangle whose left
// side is the left side of the view; none keeps anything.

// Vertical lines of the time grid.
class TimeGridPainter {
  public:
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view);
};

// The band above the rows: a tick and its time per grid step.
class TimestampsHeaderPainter {
  public:
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view);
};

// The ground of a row, with the grid on it.
class RowGroundPainter {
  public:
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view, bool selected);
};

// The stamps of a row, and what lies on them: the frames, the grips of the selected one.
class StampsPainter {
  public:
    struct Marks {
        std::optional<Uuid> selected;
        std::optional<Uuid> cursor;           // where the keyboard stands
        const StampResize* resize = nullptr;  // the stamp as drawn while its edge is dragged
        const StampMove* move = nullptr;      // left out: it is on its way
    };
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view,
                      const TimelineRow& row, const Marks& marks, StampSprites& sprites);
    // The stamp on its way to another row; `rect` is its own row.
    static void paintMoving(QPainter& painter, const QRectF& rect, const AxisView& view,
                            const TimelineRow& row, const StampMove& move, bool selected,
                            StampSprites& sprites);
};

// The red bar. `x` is a point of the axis.
class PlayheadPainter {
  public:
    static constexpr double width = 2;
    static QRectF strip(const QRectF& rect, const AxisView& view, double x);
    static void paint(QPainter& painter, const QRectF& rect, const AxisView& view, double x);
};

}  // namespace tembrix
