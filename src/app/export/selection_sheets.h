#pragma once

#include <functional>
#include <vector>

#include "ports/texts.h"

#include "app/export/choice_list.h"
#include "app/widgets/sheet.h"
#include "core/keyboard/text_focus.h"
#include "core/records/annotation_records.h"

namespace tembrix {

// The sheets on which the user chooses what to export. Each closes before it calls back. Escape and
// the cancel button close it without a call.

// A list from which a click chooses one row.
class ChoiceSheet : public Sheet {
    Q_OBJECT
  public:
    ChoiceSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                std::string_view titleKey, std::string_view emptyKey, std::vector<Choice> choices,
                std::string_view hintKey = {}, std::string_view actionKey = {});

  protected:
    ChoiceList& list() { return *list_; }

  private:
    ChoiceList* list_;
};

// A list in which the user ticks rows. Accepting returns the ticked rows; the choice can be
// skipped.
class MultiChoiceSheet : public Sheet {
    Q_OBJECT
  public:
    MultiChoiceSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                     std::string_view titleKey, std::string_view emptyKey,
                     std::vector<Choice> choices);

    std::function<void()> onSkip;

  protected:
    virtual void picked(const std::vector<std::size_t>& places) = 0;

  private:
    ChoiceList* list_;
};

class TagSelectionSheetView final : public ChoiceSheet {
    Q_OBJECT
  public:
    // `hasLabels` says which tags can be narrowed by labels.
    TagSelectionSheetView(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                          const std::vector<Tag>& uniqueTags,
                          const std::function<bool(const Tag&)>& hasLabels);

    std::function<void(const Tag&)> onSelect;
    std::function<void(const Tag&)> onSelectWithLabels;
};

class LabelSelectionSheetView final : public ChoiceSheet {
    Q_OBJECT
  public:
    LabelSelectionSheetView(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                            const std::vector<Label>& uniqueLabels);

    std::function<void(const Label&)> onLabelSelected;
    std::function<void()> onSkip;  // called after the sheet was closed without a label
};

class EventSelectionSheetView final : public ChoiceSheet {
    Q_OBJECT
  public:
    EventSelectionSheetView(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                            const std::vector<TimeEvent>& timeEvents);

    std::function<void(const TimeEvent&)> onSelect;
};

class MultiLabelSelectionSheetView final : public MultiChoiceSheet {
    Q_OBJECT
  public:
    MultiLabelSelectionSheetView(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                                 std::vector<Label> availableLabels);

    std::function<void(const std::vector<Label>&)> onDone;

  protected:
    void picked(const std::vector<std::size_t>& places) override;

  private:
    const std::vector<Label> availableLabels_;
};

class MultiTagSelectionSheetView final : public MultiChoiceSheet {
    Q_OBJECT
  public:
    MultiTagSelectionSheetView(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                               std::vector<Tag> availableTags);

    std::function<void(const std::vector<Tag>&)> onDone;

  protected:
    void picked(const std::vector<std::size_t>& places) override;

  private:
    const std::vector<Tag> availableTags_;
};

}  // namespace tembrix
