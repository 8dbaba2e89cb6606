#pragma once

#include <QWidget>
#include <optional>

#include "base/uuid.h"

#include "app/control/control_services.h"
#include "core/control/timeline_editing_model.h"

class QLabel;
class QMenu;
class QPushButton;
class QScrollBar;

namespace tembrix {

class LineNamesModel;
class LineNamesView;
class TimelineCanvas;

// The line names and the rows side by side, scrolled together, with their context menus. Disabled
// and dimmed while a drawing is edited or shown.
class TimelinesArea final : public QWidget {
    Q_OBJECT
  public:
    TimelinesArea(const ControlServices& services, TimelineEditingModel& model,
                  QWidget* parent = nullptr);

    TimelineCanvas* canvas() const { return canvas_; }
    LineNamesView* names() const { return names_; }

  Q_SIGNALS:
    void editNameRequested(const tembrix::Uuid& line);

  protected:
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void layOut();
    void makeHint();
    void showHint();
    void updateRanges();
    void applyZoom();
    void showCursor();
    void showEnabled();
    void openStampMenu(const Uuid& line, const Uuid& stamp, QPoint at);
    void openLineMenu(const Uuid& line, QPoint at);
    QMenu* makeMenu();

    const ControlServices services_;
    TimelineEditingModel& model_;
    LineNamesModel* namesModel_;
    LineNamesView* names_;
    TimelineCanvas* canvas_;
    QScrollBar* horizontal_;
    QScrollBar* vertical_;
    QWidget* veil_;
    QWidget* hint_ = nullptr;  // while there are no timelines but that of the drawings
    QLabel* hintText_ = nullptr;
    QPushButton* hintButton_ = nullptr;
    std::optional<double> zoomAnchor_;  // x on the canvas whose time keeps its position
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
