#pragma once

#include <QWidget>
#include <vector>

#include "base/signal.h"

#include "app/marking/tag_panel_services.h"
#include "core/records/annotation_records.h"

class QComboBox;
class QMenu;
class QToolButton;

namespace tembrix {

class MarkingFlow;

// The row on top of the tag panel: chooses the active collection, the standard ones of the language
// first, then the user's own, and deletes any of those.
class CollectionChooser final : public QWidget {
    Q_OBJECT
  public:
    CollectionChooser(const TagPanelServices& services, MarkingFlow& flow,
                      QWidget* parent = nullptr);

  private:
    void rebuild();
    void refresh();  // what can be chosen now, and what is chosen
    void choose(int index);
    void chooseToDelete();
    void askToDelete(const CollectionInfo& collection);

    const TagPanelServices services_;
    MarkingFlow& flow_;
    QComboBox* names_;
    QToolButton* delete_;
    QMenu* deletable_;  // the user's collections
    std::vector<CollectionInfo> shown_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace tembrix
