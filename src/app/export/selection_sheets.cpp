#include "app/export/selection_sheets.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/widgets/controls.h"

namespace tembrix {

namespace {

template <class Record>
std::vector<Choice> choicesOf(const std::vector<Record>& records) {
    std::vector<Choice> choices;
    choices.reserve(records.size());
    for (const auto& record : records)
        choices.push_back({record.name, std::nullopt, false});
    return choices;
}

std::vector<Choice> choicesOf(const std::vector<Tag>& tags,
                              const std::function<bool(const Tag&)>& hasAction) {
    std::vector<Choice> choices;
    choices.reserve(tags.size());
    for (const auto& tag : tags)
        choices.push_back({tag.name, parseHexColor(tag.color), hasAction && hasAction(tag)});
    return choices;
}

template <class Record>
std::vector<Record> recordsAt(const std::vector<Record>& records,
                              const std::vector<std::size_t>& places) {
    std::vector<Record> result;
    result.reserve(places.size());
    for (const auto place : places)
        result.push_back(records[place]);
    return result;
}

}  // namespace

ChoiceSheet::ChoiceSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                         std::string_view titleKey, std::string_view emptyKey,
                         std::vector<Choice> choices, std::string_view hintKey,
                         std::string_view actionKey)
    : Sheet(parent, texts, titleKey) {
    if (!hintKey.empty() && !choices.empty())
        content()->addWidget(makeLabel(texts, hintKey, LabelLook::secondary, this));
    list_ = new ChoiceList(texts, focus, std::move(choices), ChoiceList::Mode::one, titleKey,
                           emptyKey, actionKey, this);
    content()->addWidget(list_, 1);
    list_->setFocus();
}

MultiChoiceSheet::MultiChoiceSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                                   std::string_view titleKey, std::string_view emptyKey,
                                   std::vector<Choice> choices)
    : Sheet(parent, texts, titleKey) {
    list_ = new ChoiceList(texts, focus, std::move(choices), ChoiceList::Mode::many, titleKey,
                           emptyKey, {}, this);
    content()->addWidget(list_, 1);
    addCancelButton("collectionsButtonCancel");
    auto* skip = addCancelButton("skip");
    disconnect(skip, &QPushButton::clicked, this, &QDialog::reject);
    connect(skip, &QPushButton::clicked, this, [this] {
        accept();
        onSkip();
    });
    auto* ready = addAcceptButton("done", ButtonLook::accented, false);
    ready->setEnabled(false);
    connect(ready, &QPushButton::clicked, this, [this] {
        accept();
        picked(list_->ticked());
    });
    connect(list_, &ChoiceList::tickedChanged, ready,
            [this, ready] { ready->setEnabled(!list_->ticked().empty()); });
    list_->setFocus();
}

TagSelectionSheetView::TagSelectionSheetView(QWidget* parent, const Texts& texts,
                                             FocusStateManager& focus,
                                             const std::vector<Tag>& uniqueTags,
                                             const std::function<bool(const Tag&)>& hasLabels)
    : ChoiceSheet(parent, texts, focus, "selectTagForExport", "exportNoTags",
                  choicesOf(uniqueTags, hasLabels), "clickTagToExport", "exportTagWithLabels") {
    connect(&list(), &ChoiceList::chosen, this, [this, uniqueTags](std::size_t place) {
        accept();
        onSelect(uniqueTags[place]);
    });
    const auto withLabels = [this, uniqueTags](std::size_t place) {
        accept();
        onSelectWithLabels(uniqueTags[place]);
    };
    connect(&list(), &ChoiceList::actionChosen, this, withLabels);
    // The button applies the row's action to the selected row, for keyboard users.
    auto* button = addSideButton("exportTagWithLabels");
    connect(button, &QPushButton::clicked, this, [this, withLabels] {
        if (const auto place = list().current())
            withLabels(*place);
    });
    const auto enable = [this, button] {
        const auto place = list().current();
        button->setEnabled(place && list().hasAction(*place));
    };
    connect(&list(), &ChoiceList::currentChanged, button, enable);
    enable();
    addCancelButton("collectionsButtonCancel");
}

LabelSelectionSheetView::LabelSelectionSheetView(QWidget* parent, const Texts& texts,
                                                 FocusStateManager& focus,
                                                 const std::vector<Label>& uniqueLabels)
    : ChoiceSheet(parent, texts, focus, "selectLabelForExport", "exportNoLabels",
                  choicesOf(uniqueLabels)) {
    connect(&list(), &ChoiceList::chosen, this, [this, uniqueLabels](std::size_t place) {
        accept();
        onLabelSelected(uniqueLabels[place]);
    });
    addCancelButton("skip");
    connect(this, &QDialog::rejected, this, [this] {
        if (onSkip)
            onSkip();
    });
}

EventSelectionSheetView::EventSelectionSheetView(QWidget* parent, const Texts& texts,
                                                 FocusStateManager& focus,
                                                 const std::vector<TimeEvent>& timeEvents)
    : ChoiceSheet(parent, texts, focus, "selectEventForExport", "exportNoEvents",
                  choicesOf(timeEvents)) {
    connect(&list(), &ChoiceList::chosen, this, [this, timeEvents](std::size_t place) {
        accept();
        onSelect(timeEvents[place]);
    });
    addCancelButton("collectionsButtonCancel");
}

MultiLabelSelectionSheetView::MultiLabelSelectionSheetView(QWidget* parent, const Texts& texts,
                                                           FocusStateManager& focus,
                                                           std::vector<Label> availableLabels)
    : MultiChoiceSheet(parent, texts, focus, "selectLabelsForExport", "exportNoLabels",
                       choicesOf(availableLabels)),
      availableLabels_(std::move(availableLabels)) {}

void MultiLabelSelectionSheetView::picked(const std::vector<std::size_t>& places) {
    onDone(recordsAt(availableLabels_, places));
}

MultiTagSelectionSheetView::MultiTagSelectionSheetView(QWidget* parent, const Texts& texts,
                                                       FocusStateManager& focus,
                                                       std::vector<Tag> availableTags)
    : MultiChoiceSheet(parent, texts, focus, "selectTagsForExport", "exportNoTags",
                       choicesOf(availableTags, {})),
      availableTags_(std::move(availableTags)) {}

void MultiTagSelectionSheetView::picked(const std::vector<std::size_t>& places) {
    onDone(recordsAt(availableTags_, places));
}

}  // namespace tembrix
