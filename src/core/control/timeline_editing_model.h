#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/published.h"
#include "base/signal.h"
#include "base/uuid.h"

#include "ports/scheduler.h"
#include "ports/texts.h"
#include "ports/user_defaults.h"

#include "core/collections/tag_library_manager.h"
#include "core/control/drag_seek.h"
#include "core/control/stamp_editing.h"
#include "core/control/stamp_gestures.h"
#include "core/control/timeline_axis.h"
#include "core/control/timeline_cursor.h"
#include "core/control/timeline_rows.h"
#include "core/control/timeline_texts.h"
#include "core/keyboard/text_focus.h"
#include "core/notifications/event_bus.h"
#include "core/playback/playhead.h"
#include "core/records/markup_mode.h"
#include "core/records/timeline_records.h"
#include "core/timeline/markup_mode_store.h"
#include "core/timeline/timeline_data_manager.h"

namespace tembrix {

// The logic of the control window: zoom, selection, gestures on stamps and lines, hover text and
// the keyboard cursor. The view passes points on the axis and paints the published state. Lives as
// long as the window. Main thread only.
class TimelineEditingModel {
  public:
    static constexpr double zoomStep = 0.5;
    static constexpr double smallestScale = 1.0;
    static constexpr double updateInterval = 0.1;  // seconds between two hover tests
    static constexpr double nudge = 0.1;           // seconds per press of a key

    TimelineEditingModel(TimelineDataManager& timeline, const TagLibraryManager& tagLibrary,
                         MarkupModeStore& markupModes, Playhead& playhead,
                         const FocusStateManager& focus, UserDefaults& defaults,
                         Scheduler& scheduler, EventBus& events);

    // Called when the window is shown and hidden.
    void appear();
    void disappear();

    Published<MarkupMode, TimelineEditingModel> markupMode;
    Published<double, TimelineEditingModel> timelineScale{smallestScale};
    Published<double, TimelineEditingModel> magnifyScale{1.0};  // of a pinch in progress
    // x in points, while an edge is dragged.
    Published<std::optional<double>, TimelineEditingModel> tagEdgePosition;
    Published<bool, TimelineEditingModel> isEditorModeActive{false};
    Published<bool, TimelineEditingModel> isScreenshotDisplayActive{false};
    Published<std::optional<std::string>, TimelineEditingModel> hoveredStampInfo;
    Published<std::optional<Uuid>, TimelineEditingModel> pointedStamp;
    Published<TimelineCursor, TimelineEditingModel> cursor;
    Signal<> zoomChanged;  // emitted once per step, after both scales have been updated
    Signal<std::vector<std::size_t>> rowsChanged;  // indices of the rows to repaint
    StampEditing editing;

    bool timelinesEnabled() const { return !*isEditorModeActive && !*isScreenshotDisplayActive; }
    // While a drawing is edited, undo belongs to the drawing editor.
    bool canTakeBack() const { return !*isEditorModeActive; }
    const TimelineRows& rows() const { return rows_; }

    // The axis for a window with `available` points for it.
    TimelineAxis axis(double available) const;
    double playheadX(const TimelineAxis& axis) const;

    // The zoom does not change while an edge is dragged, because the drag uses points on the axis.
    void zoomIn();
    void zoomOut();
    void magnify(double magnification);
    void endMagnify();
    std::string zoomText() const;  // "1.5x"

    void setMode(MarkupMode mode) { markupModes_.setMarkupMode(mode); }
    bool canAddLine() const { return *markupMode == MarkupMode::standard; }
    void selectLine(const Uuid& line);
    // Handles a line that was dropped on another one or below all of them. `text` is the dragged
    // text; it is ignored if it is not the id of a line.
    void dropLine(const std::string& text, const std::optional<Uuid>& currentLine);
    void moveLineBy(const Uuid& line, int step);  // moves by one place, for the keyboard

    void clickStamp(const Uuid& line, const Uuid& stamp);
    void clickBackground();
    void seekTo(double x, const TimelineAxis& axis);  // for a press or drag on the header
    void removeStamp(const Uuid& line, const Uuid& stamp);

    // The current gesture on a stamp.
    const StampResize* resize() const { return std::get_if<StampResize>(&gesture_); }
    const StampMove* move() const { return std::get_if<StampMove>(&gesture_); }
    void beginResize(const Uuid& line, const Uuid& stamp, ResizeEdge edge,
                     const TimelineAxis& axis);
    void changeResize(double dx);  // points from the current position of the edge
    void endResize();
    void beginMove(const Uuid& line, const Uuid& stamp);
    void changeMove(double dy);  // points since the press
    void endMove(double y);      // points below the top of the stamp's own row
    void cancelGesture();        // restores the state before the gesture
    Signal<> gestureChanged;

    // The pointer has moved to `x` on the axis, `fromTop` points below the top of the header.
    // `timestamp` is the time of the event in seconds.
    void hover(double timestamp, double x, double fromTop, const TimelineAxis& axis);
    void hoverEnded();
    // The stamp that a click would take, by the pointer's position; absent on the background.
    void pointAt(const std::optional<Uuid>& stamp);
    // Its hover text, unless that is hoveredStampInfo already: of several stamps at one time, the
    // first one is shown there, and a click takes the topmost.
    std::optional<std::string> pointedStampInfo() const;

    // The stamp may have been removed meanwhile; it stays selected until another one is.
    bool canRemoveSelectedStamp() const;
    void removeSelectedStamp();

    void goTo(const TimelineCursor& place);  // moves the cursor
    void moveCursorAcross(int step);
    void moveCursorAlong(int step);
    void activateCursor();  // same as a click on the stamp or the line
    void nudgeCursor(ResizeEdge edge, int step);
    void moveCursorStamp(int step);  // moves the stamp to the line above or below

  private:
    void takeLines(const TimelineLines& lines);
    void showHover(const std::optional<Uuid>& stamp);
    std::optional<std::string> hoverText(const std::optional<Uuid>& stamp) const;
    void zoomTo(double scale);
    void endResizing();

    TimelineDataManager& timeline_;
    const TagLibraryManager& tagLibrary_;
    MarkupModeStore& markupModes_;
    Playhead& playhead_;
    const FocusStateManager& focus_;
    EventBus& events_;
    TimelineRows rows_;
    std::variant<std::monostate, StampResize, StampMove> gesture_;
    DragSeek dragSeek_;
    std::optional<double> lastUpdateTime_;
    std::optional<Uuid> hovered_;
    bool onScreen_ = false;
    Subscription lines_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
