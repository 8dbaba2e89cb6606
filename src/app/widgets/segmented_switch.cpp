#include "app/widgets/segmented_switch.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QToolButton>

#include "app/widgets/controls.h"
#include "app/widgets/translated.h"

namespace tembrix {

SegmentedSwitch::SegmentedSwitch(const Texts& texts, std::initializer_list<std::string_view> keys,
                                 QWidget* parent)
    : QWidget(parent), group_(new QButtonGroup(this)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    const int last = static_cast<int>(keys.size()) - 1;
    for (const auto key : keys) {
        const int index = static_cast<int>(group_->buttons().size());
        auto* button = new QToolButton(this);
        showText(button, texts, key, &QAbstractButton::text, &QAbstractButton::setText);
        button->setCheckable(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setProperty("segment", index == 0 ? "first" : index == last ? "last" : "middle");
        nameControl(button, texts, key);
        group_->addButton(button, index);
        row->addWidget(button);
    }
    choose(0);
    connect(group_, &QButtonGroup::idClicked, this, &SegmentedSwitch::chosenByUser);
}

int SegmentedSwitch::chosen() const {
    return group_->checkedId();
}

void SegmentedSwitch::choose(int index) {
    if (auto* button = group_->button(index))
        button->setChecked(true);
}

}  // namespace tembrix
