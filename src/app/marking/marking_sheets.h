#pragma once

#include <QObject>
#include <QPointer>

#include "base/signal.h"

#include "app/marking/tag_panel_services.h"

class QWidget;

namespace tembrix {

class MarkingFlow;
class Sheet;

// Shows the sheet that the marking flow requests over the window of `panel`, and passes the answer
// to the flow.
class MarkingSheets final : public QObject {
    Q_OBJECT
  public:
    MarkingSheets(const TagPanelServices& services, MarkingFlow& flow, QWidget* panel);
    ~MarkingSheets() override;

  private:
    void open();
    void dismiss();  // without an answer
    void addTimeline();
    Sheet* makeMessage(const char* key);
    Sheet* makeSelection();

    const TagPanelServices services_;
    MarkingFlow& flow_;
    QWidget* panel_;
    QPointer<Sheet> sheet_;
    Subscription showLabelSheet_;
};

}  // namespace tembrix
