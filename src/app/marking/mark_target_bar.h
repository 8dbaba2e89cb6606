#pragma once

#include <QString>
#include <QWidget>
#include <string>
#include <vector>

#include "base/signal.h"

#include "app/marking/tag_panel_services.h"

class QLabel;
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

    // Without the caption.
    void setCompact(bool compact);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    struct Shown {
        QString text;
        std::string color;
        bool doubtful = false;
        bool operator==(const Shown&) const = default;
    };

    void bindCommands();
    void showTarget();
    void elide();
    void fillMenu();
    void openMenu();

    const TagPanelServices services_;
    MarkingFlow& flow_;
    QLabel* caption_;
    QToolButton* button_;
    QMenu* menu_;
    Shown shown_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
