#pragma once

#include <QWidget>
#include <vector>

#include "base/signal.h"

#include "app/marking/tag_panel_services.h"

class QMenu;
class QToolButton;

namespace tembrix {

class MarkingFlow;

// Shows the timeline of the next mark with its color, warns if it is that of the drawings, and lets
// the user choose another one.
class MarkTargetBar final : public QWidget {
    Q_OBJECT
  public:
    MarkTargetBar(const TagPanelServices& services, MarkingFlow& flow, QWidget* parent = nullptr);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void bindCommands();
    void showTarget();
    void elide();
    void fillMenu();
    void openMenu();

    const TagPanelServices services_;
    MarkingFlow& flow_;
    QToolButton* button_;
    QMenu* menu_;
    QString text_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
