#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/texts.h"

#include "app/widgets/sheet.h"
#include "core/marking/stamp_items_selection.h"
#include "core/records/timeline_records.h"

class QAbstractButton;

namespace tembrix {

// Chooses the labels or the time events of a stamp by mouse, keyboard or label hot key. After
// accepted(), ids() returns the choice.
class StampItemsSheet final : public Sheet {
    Q_OBJECT
  public:
    // The accept key is the text of the button that takes the choice.
    StampItemsSheet(QWidget* parent, const Texts& texts, StampEditSheetType type,
                    std::string_view acceptKey, std::unique_ptr<StampItemsSelection> selection);
    ~StampItemsSheet() override;

    std::vector<std::string> ids() const { return selection_->ids(); }

  private:
    QWidget* makeSections();
    void showSelection();

    std::unique_ptr<StampItemsSelection> selection_;
    std::multimap<std::string, QAbstractButton*> buttons_;  // by the item's id
    Subscription selected_;
};

}  // namespace tembrix
