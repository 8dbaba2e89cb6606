#pragma once

#include <QBasicTimer>
#include <QPixmap>
#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <variant>

#include "base/uuid.h"

#include "app/control/stamp_sprites.h"
#include "app/control/timeline_painters.h"
#include "core/control/timeline_axis.h"
#include "core/control/timeline_cursor.h"
#include "core/control/timeline_editing_model.h"
#include "core/control/timeline_rows.h"
#include "core/records/timeline_records.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// The time axis of the control window: paints header, rows, stamps and playhead and handles mouse
// and keyboard input on them. Rows are painted into a cached picture, so that a moving playhead
// repaints only a strip and a new stamp repaints one row. The owner does the scrolling.
class TimelineCanvas final : public QWidget {
    Q_OBJECT
  public:
    TimelineCanvas(TimelineEditingModel& model, TimelineDataManager& timeline,
                   QWidget* parent = nullptr);

    TimelineEditingModel& model() const { return model_; }
    const std::optional<Uuid>& selectedLine() const { return *timeline_.selectedLineID; }
    const std::optional<Uuid>& selectedStamp() const { return *timeline_.selectedStampID; }
    void selectStamp(const Uuid& stamp) { timeline_.selectStamp(stamp); }
    void openStampMenu(const TimelineHit& stamp);
    // What assistive programs tell besides the names.
    struct Descriptions {
        std::function<QString(const TimelineLine& line)> line;
        std::function<QString(const TimelineStamp& stamp)> stamp;
    };
    void setDescriptions(Descriptions descriptions) { descriptions_ = std::move(descriptions); }
    const Descriptions& descriptions() const { return descriptions_; }
    const TimelineAxis& axis() const { return axis_; }
    // How far the view is scrolled, in points.
    double scrollX() const { return scrollX_; }
    double scrollY() const { return scrollY_; }
    void setScroll(double x, double y);
    double playheadX() const { return model_.playheadX(axis_); }

    // The areas of a row and of one of its stamps in widget coordinates; they may be out of view.
    QRectF rowArea(std::size_t row) const;
    QRectF stampArea(std::size_t row, std::size_t stamp) const;

    void refreshAxis();   // call when the zoom or the video has changed
    void movePlayhead();  // call when the time has changed

    QSize sizeHint() const override { return {800, 240}; }

  Q_SIGNALS:
    void axisChanged();
    void rowCountChanged();
    void cursorMoved();  // by keyboard; a stamp that is clicked is in view already
    // A pinch gesture: the factor since its beginning and its position in widget coordinates.
    void pinched(double magnification, double x);
    void pinchEnded();
    // The pointer is dragging this many points outside the axis or the rows. Emitted repeatedly
    // while it stays there.
    void draggedBeyond(QPointF by);
    // Playback or a seek has moved the playhead. Not emitted while the user drags.
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
    // The states of a mouse press.
    struct Idle {};
    struct Scrubbing {};  // pressed on the header
    struct Pressed {
        QPointF at;  // widget coordinates
        Uuid line;
        std::optional<Uuid> stamp;
        std::optional<ResizeEdge> grip;
    };
    struct Resizing {
        double anchor;  // x on the axis to which the next movement is relative
    };
    struct Moving {
        double pressed;  // points below the top of the first row
    };
    using Press = std::variant<Idle, Scrubbing, Pressed, Resizing, Moving>;

    AxisView view() const { return {axis_, scrollX_, devicePixelRatioF()}; }
    QRectF headerArea() const;
    QRectF rowsArea() const;
    std::optional<TimelineHit> hitAt(QPointF position) const;
    void showPointer(const QMouseEvent& event);  // updates the cursor shape and the hovered stamp
    void dragTo(QPointF position);
    QPointF beyond(QPointF position) const;
    bool handleGesture(QEvent* event);
    void announceCursor();

    void followSelection();
    void followCursor();
    void followPointed();
    void lookUnderPointer();
    void followGesture();
    QRect movingArea() const;  // of the stamp being moved to another row, with its shadow
    void redrawRow(std::optional<std::size_t> row);
    void redrawChanged(std::size_t row);
    void redraw(std::size_t row, const QRectF& part);
    QRectF areaOf(const TimeSpan& span, std::size_t row) const;
    void redrawRowOf(const std::optional<Uuid>& stamp);
    void redrawAll();
    void renderLayer();
    void renderRow(QPainter& painter, std::size_t row, const QRectF& part,
                   const StampsPainter::Marks& marks);

    TimelineEditingModel& model_;
    TimelineDataManager& timeline_;
    TimelineAxis axis_;
    double scrollX_ = 0;
    double scrollY_ = 0;
    Press press_;
    QPointF dragged_;  // pointer position during a drag
    QBasicTimer beyondTimer_;
    double pinch_ = 1;

    QPixmap layer_;                            // header and rows, without the playhead
    QPixmap ground_[2];                        // row backgrounds: plain, selected
    std::map<std::size_t, QRectF> dirtyRows_;  // with the part that is to be rendered
    bool allDirty_ = true;
    double shownPlayheadX_ = 0;
    StampSprites sprites_;
    std::size_t rowCount_ = 0;
    Descriptions descriptions_;
    std::optional<Uuid> shownLine_;   // painted as selected in the layer
    std::optional<Uuid> shownStamp_;  // painted as selected in the layer
    TimelineCursor shownCursor_;
    std::optional<QPointF> pointer_;    // where the mouse pointer rests over the canvas
    std::optional<Uuid> shownPointed_;  // outlined in the layer
    std::optional<Uuid> shownGesture_;  // the stamp painted as being moved or resized
    QRect shownMoving_;                 // where the moving stamp was last painted
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
