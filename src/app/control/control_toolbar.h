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

// The bar above the timelines: mode and new timeline; undo and redo; transport and time; zoom;
// export.
class ControlToolbar final : public QWidget {
    Q_OBJECT
  public:
    ControlToolbar(const ControlServices& services, TimelineEditingModel& model,
                   QWidget* parent = nullptr);

    // A further group at the right end.
    void addGroup(QWidget* group);

  Q_SIGNALS:
    void addLineRequested();

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
