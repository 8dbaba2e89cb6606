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

// The row at the top of the tag panel. It chooses the active collection, standard ones of the
// language first, and deletes collections of the user.
class CollectionChooser final : public QWidget {
    Q_OBJECT
  public:
    CollectionChooser(const TagPanelServices& services, MarkingFlow& flow,
                      QWidget* parent = nullptr);

  private:
    void rebuild();
    void refresh();  // updates the selection and what can be chosen
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
