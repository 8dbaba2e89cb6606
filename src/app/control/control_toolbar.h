#pragma once

#include <QWidget>
#include <vector>

#include "base/signal.h"

#include "app/control/control_services.h"

class QHBoxLayout;
class QLabel;
class QToolButton;

namespace tembrix {

class SegmentedSwitch;
class TimelineEditingModel;

// The toolbar above the timelines: markup mode, new timeline, undo and redo, playback controls and
// time, zoom, export.
class ControlToolbar final : public QWidget {
    Q_OBJECT
  public:
    ControlToolbar(const ControlServices& services, TimelineEditingModel& model,
                   QWidget* parent = nullptr);

    // Adds a group of controls at the right end.
    void addGroup(QWidget* group);

  private:
    void addModes();
    void addHistory();
    void addTransport();
    void addZoom();
    void separate();

    const ControlServices services_;
    TimelineEditingModel& model_;
    QHBoxLayout* row_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
