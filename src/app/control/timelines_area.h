#pragma once

#include <QWidget>
#include <optional>

#include "base/uuid.h"

#include "app/control/control_services.h"
#include "core/control/timeline_editing_model.h"

class QMenu;
class QScrollBar;

namespace tembrix {

class LineNamesModel;
class LineNamesView;
class TimelineCanvas;

// Names and rows side by side, scrolled in step, with the menus of both. Disabled and faint while a
// drawing has the screen.
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
    std::optional<double> zoomAnchor_;  // x of the canvas that stays in place
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
