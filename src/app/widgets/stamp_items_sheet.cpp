#include "app/widgets/stamp_items_sheet.h"

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "base/shortened.h"

#include "app/theme/theme.h"
#include "app/widgets/accessible.h"
#include "app/widgets/controls.h"
#include "app/widgets/flow_layout.h"
#include "app/widgets/qt_text.h"
#include "core/keyboard/hot_key_codes.h"

namespace tembrix {

namespace {

constexpr QSize sheetSize{520, 420};

const char* titleKey(StampEditSheetType type) {
    return type == StampEditSheetType::lables ? "stampItemsLabelsTitle" : "stampItemsEventsTitle";
}

}  // namespace

StampItemsSheet::StampItemsSheet(QWidget* parent, const Texts& texts, StampEditSheetType type,
                                 std::string_view acceptKey,
                                 std::unique_ptr<StampItemsSelection> selection)
    : Sheet(parent, texts, titleKey(type)), selection_(std::move(selection)) {
    setHotkeys(Hotkeys::ofLabels);
    setTitle(qtext(texts.text(titleKey(type))) + ": " + qtext(shortened(selection_->stampName())));

    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    QWidget* sections = makeSections();
    scroll->setWidget(sections);
    // The background of the sheet is visible behind the sections.
    scroll->viewport()->setAutoFillBackground(false);
    sections->setAutoFillBackground(false);
    // A sheet of the tag panel is not wider than the panel, so that it does not cover the video.
    const int width = std::min(sheetSize.width(), parent->window()->width() - 2 * Sheet::edge - 2);
    scroll->setMinimumWidth(width);
    scroll->setFixedHeight(std::min(sections->heightForWidth(width), sheetSize.height()));
    content()->addWidget(scroll, 1);

    addCancelButton("collectionsButtonCancel");
    addAcceptButton(acceptKey);
    selected_ = selection_->selectedItems.observe(
        [this](const std::set<std::string>&) { showSelection(); });
    showSelection();
}

StampItemsSheet::~StampItemsSheet() = default;

QWidget* StampItemsSheet::makeSections() {
    auto* page = new QWidget(this);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, theme::margin, 0);
    column->setSpacing(theme::spacing);
    for (const auto& section : selection_->sections()) {
        if (!section.title.empty()) {
            auto* title = new QLabel(qtext(shortened(section.title)), page);
            title->setTextFormat(Qt::PlainText);
            title->setWordWrap(true);
            setLook(title, LabelLook::caption);
            column->addWidget(title);
        }
        auto* items = new QWidget(page);
        items->setAccessibleName(qtext(shortened(section.title)));
        auto* flow = new FlowLayout(theme::spacing, items);
        for (const auto& item : section.items) {
            QString text = qtext(shortened(item.name));
            if (item.hotkey)
                text += "   " + qtext(hotkeyCaption(shortened(*item.hotkey)));
            auto* button = new QPushButton(text.replace('&', "&&"), items);
            button->setCheckable(true);
            button->setAutoDefault(false);
            nameControl(button, item.id, qtext(shortened(item.name)));
            if (item.hotkey)
                tellKey(button, qtext(hotkeyCaption(shortened(*item.hotkey))));
            connect(button, &QPushButton::clicked, this,
                    [this, id = item.id] { selection_->toggle(id); });
            buttons_.emplace(item.id, button);
            flow->addWidget(button);
        }
        column->addWidget(items);
    }
    if (buttons_.empty())
        column->addWidget(
            makeLabel(texts(), "stampItemsNothingToChoose", LabelLook::secondary, page));
    column->addStretch(1);
    return page;
}

void StampItemsSheet::showSelection() {
    for (const auto& [id, button] : buttons_)
        button->setChecked(selection_->selectedItems->contains(id));
}

}  // namespace tembrix
