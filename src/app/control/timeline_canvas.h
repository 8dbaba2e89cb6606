#pragma once

#include <QBasicTimer>
#include <QPixmap>
#include <QWidget>
#include <optional>
#include <set>
#include <variant>

#include "base/uuid.h"

#include "app/control/stamp_sprites.h"
#include "app/control/timeline_painters.h"
#include "core/control/timeline_axis.h"
#include "core/control/timeline_cursor.h"
#include "core/control/timeline_editing_model.h"
#include "core/control/timeline_rows.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// The axis of the control window: header, rows, stamps, playhead, and every gesture on them. Rows
// are painted into a picture that is kept, so that a moving playhead only uncovers a strip of it
// and a new stamp repaints one row. Scrolling is the owner's matter.
class TimelineCanvas final : public QWidget {
    Q_OBJECT
  public:
    TimelineCanvas(TimelineEditingModel& model, TimelineDataManager& timeline,
                   QWidget* parent = nullptr);

    const TimelineEditingModel& model() const { return model_; }
    const TimelineAxis& axis() const { return axis_; }
    // Points of the axis and of the rows that are scrolled out of view.
    double scrollX() const { return scrollX_; }
    double scrollY() const { return scrollY_; }
    void setScroll(double x, double y);
    double playheadX() const { return model_.playheadX(axis_); }

    // Where a row, and a stamp of it, stands in the widget; it may be out of view.
    QRectF rowArea(std::size_t row) const;
    QRectF stampArea(std::size_t row, std::size_t stamp) const;

    void refreshAxis();   // after a change of the zoom or of the video
    void movePlayhead();  // after a change of the time

    QSize sizeHint() const override { return {800, 240}; }

  Q_SIGNALS:
    void axisChanged();
    void rowCountChanged();
    void cursorMoved();  // by keyboard: what the pointer clicks is in view
    // A pinch: the factor since its beginning, and where on the widget.
    void pinched(double magnification, double x);
    void pinchEnded();
    // What is dragged is this many points past a side of the axis or of the rows; told again and
    // again while it stays there.
    void draggedBeyond(QPointF by);
    // Along the axis, by itself or by a seek: not under a hand that drags.
    void playheadMoved(double from, double to);
    void stampMenuRequested(const tembrix::Uuid& line, const tembrix::Uuid& stamp,
                            const QPoint& globalPosition);

  protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    // What a press of the button may become.
    struct Idle {};
    struct Scrubbing {};  // on the header
    struct Pressed {
        QPointF at;  // of the widget
        Uuid line;
        std::optional<Uuid> stamp;
        std::optional<ResizeEdge> grip;
    };
    struct Resizing {
        double anchor;  // x of the axis from which the next movement counts
    };
    struct Moving {
        double pressed;  // points below the top of the first row
    };
    using Press = std::variant<Idle, Scrubbing, Pressed, Resizing, Moving>;

    AxisView view() const { return {axis_, scrollX_, devicePixelRatioF()}; }
    QRectF headerArea() const;
    QRectF rowsArea() const;
    std::optional<TimelineHit> hitAt(QPointF position) const;
    void showPointer(const QMouseEvent& event);  // its shape, and what lies under it
    void dragTo(QPointF position);
    QPointF beyond(QPointF position) const;
    bool handleGesture(QEvent* event);
    void announceCursor();

    void followSelection();
    void followCursor();
    void followGesture();
    QRect movingArea() const;  // of the stamp on its way to another row, with its shadow
    void redrawRow(std::optional<std::size_t> row);
    void redrawRowOf(const std::optional<Uuid>& stamp);
    void redrawAll();
    void renderLayer();
    void renderRow(QPainter& painter, std::size_t row, const StampsPainter::Marks& marks);

    TimelineEditingModel& model_;
    TimelineDataManager& timeline_;
    TimelineAxis axis_;
    double scrollX_ = 0;
    double scrollY_ = 0;
    Press press_;
    QPointF dragged_;  // where the pointer is while it drags
    QBasicTimer beyondTimer_;
    double pinch_ = 1;

    QPixmap layer_;      // header and rows as they lie under the playhead
    QPixmap ground_[2];  // of a row: plain, selected
    std::set<std::size_t> dirtyRows_;
    bool allDirty_ = true;
    double shownPlayheadX_ = 0;
    StampSprites sprites_;
    std::size_t rowCount_ = 0;
    std::optional<Uuid> shownLine_;   // as selected in the layer
    std::optional<Uuid> shownStamp_;  // as selected in the layer
    TimelineCursor shownCursor_;
    std::optional<Uuid> shownGesture_;  // the stamp in hand, in the layer as such
    QRect shownMoving_;                 // where it was painted on its way to another row
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
