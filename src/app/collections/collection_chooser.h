#pragma once

#include <QWidget>
#include <vector>

#include "base/signal.h"

#include "app/services.h"

class QComboBox;
class QToolButton;

namespace tembrix {

class MarkingFlow;

// The row on top of the tag panel: chooses the active collection, the standard ones of the language
// first, then the user's own, and deletes one of those.
class CollectionChooser final : public QWidget {
    Q_OBJECT
  public:
    CollectionChooser(AppServices& services, MarkingFlow& flow, QWidget* parent = nullptr);

  private:
    void rebuild();
    void refresh();  // what can be chosen now, and what is chosen
    void choose(int index);
    void askToDelete();

    AppServices& services_;
    MarkingFlow& flow_;
    QComboBox* names_;
    QToolButton* delete_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
