#pragma once

#include <QObject>
#include <QPointer>

#include "base/signal.h"

#include "app/services.h"

class QWidget;

namespace tembrix {

class MarkingFlow;
class Sheet;

// Shows the sheet that a press asks for over the window of `panel`, and brings its answer back to
// the flow.
class MarkingSheets final : public QObject {
    Q_OBJECT
  public:
    MarkingSheets(AppServices& services, MarkingFlow& flow, QWidget* panel);
    ~MarkingSheets() override;

  private:
    void open();
    void dismiss();  // without an answer
    Sheet* makeMessage(const char* key);
    Sheet* makeSelection();

    AppServices& services_;
    MarkingFlow& flow_;
    QWidget* panel_;
    QPointer<Sheet> sheet_;
    Subscription showLabelSheet_;
};

}  // namespace tembrix
